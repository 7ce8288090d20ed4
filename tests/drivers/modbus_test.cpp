// The Modbus driver through the links of the engine, against devices that keep the protocol and devices that
// do not.
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <limits>
#include <sstream>
#include <thread>

#include "drivers/modbus/connection.h"
#include "drivers/modbus/endpoint.h"
#include "tests/drivers/driver_node.h"
#include "tests/drivers/modbus_server.h"

namespace vastra {
namespace {

using CValues = std::vector<float>;
using CWords = std::vector<std::uint16_t>;
using std::chrono::milliseconds;
using std::chrono::steady_clock;
constexpr int kModbus = 9002;
constexpr UINT kWrite = CLink::modeWrite;
constexpr int kLong = 20000;  // milliseconds: a time-out that must not come
constexpr int kShort = 300;   // one that does
constexpr const char* kTimeOut = "Error Not named Timeout error.\n";
constexpr const char* kBadFrame = "Error Not named Invalid frame.\n";
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

bool Has(const std::string& text, const std::string& piece) { return text.find(piece) != std::string::npos; }

void Nap() { std::this_thread::sleep_for(milliseconds(1)); }

std::string PathOfLine() { return testing::TempDir() + "modbus_line_" + std::to_string(::getpid()); }

DriverConfig At(const CModbusServer& server, const std::string& list, int timeOut = kLong) {
  DriverConfig config;
  const bool isSerial = server.Name().front() == '/';
  config.text1 = (server.Name() + (isSerial ? ":115200,8,E,1" : "")).c_str();
  config.text2 = list.c_str();
  config.station = 1;
  config.timeOut = timeOut;
  return config;
}

// Tries until it succeeds.
template <class Try>
testing::AssertionResult Soon(Try attempt) {
  const auto end = steady_clock::now() + std::chrono::seconds(60);
  while (!attempt())
    if (Nap(); steady_clock::now() > end) return testing::AssertionFailure() << "for a minute now";
  return testing::AssertionSuccess();
}

// Reads until there are values, which must be the right ones.
testing::AssertionResult Recovers(CDriverNode& node, const CValues& right) {
  CValues values;
  const auto recovers = Soon([&] { return !(values = node.Read()).empty(); });
  if (!recovers) return testing::AssertionFailure() << node.Fault();
  return values == right ? recovers : testing::AssertionFailure() << testing::PrintToString(values);
}

class Modbus : public testing::Test {
 protected:
  CDriverNode Node(const DriverConfig& config, UINT count, UINT mode = CLink::modeRead) {
    return CDriverNode(m_recorder, kModbus, config, count, mode);
  }
  CRecorder m_recorder;
};

// What a type has on the wire in each order, as places in the number from its highest byte on.
struct COrdered {
  const char *order, *of16, *of32, *of64;
};
constexpr COrdered kOrders[] = {{"", "AB", "ABCD", "ABCDEFGH"},
                                {"abcd", "AB", "ABCD", "ABCDEFGH"},
                                {"cdab", "AB", "CDAB", "GHEFCDAB"},
                                {"badc", "BA", "BADC", "BADCFEHG"},
                                {"DCBA", "BA", "DCBA", "HGFEDCBA"}};

CWords OnTheWire(std::uint64_t number, int size, const COrdered& order) {
  const char* places = size == 1 ? order.of16 : size == 2 ? order.of32 : order.of64;
  const auto byte = [=](int at) { return number >> 8 * (2 * size - 1 - (places[at] - 'A')) & 0xFF; };
  CWords words;
  for (int i = 0; i < size; ++i)
    words.push_back(static_cast<std::uint16_t>(byte(2 * i) << 8 | byte(2 * i + 1)));
  return words;
}

std::uint32_t Bits(float value) { return std::bit_cast<std::uint32_t>(value); }
constexpr float FromBits(std::uint32_t bits) { return std::bit_cast<float>(bits); }

// A number on the wire and its value; both directions unless only one is possible.
struct CNumberRow {
  const char* type;
  std::uint64_t number;
  float value;
  enum { both, read, write } way = both;
};
constexpr CNumberRow kNumbers[] = {
    {"u16", 0xFFFF, 65535},
    {"u16", 0x1234, 4660},
    {"u16", 0xFFFF, 65535.4f, CNumberRow::write},
    {"u16", 2, 1.6f, CNumberRow::write},
    {"u16", 0, -0.4f, CNumberRow::write},
    {"i16", 0x8001, -32767},
    {"i16", 0x7FFE, 32766},
    {"i16", 0x8000, -32768.4f, CNumberRow::write},
    {"i16", 0xFFFE, -1.6f, CNumberRow::write},
    {"u32", 0x00010203, 66051},
    {"u32", 0xFFFFFF00, 4294967040.0f},
    {"u32", 0xFFFFFFFF, 4294967296.0f, CNumberRow::read},
    {"i32", 0x80000000, -2147483648.0f},
    {"i32", 0x7FFFFF80, 2147483520},
    {"i32", 0x7FFFFFFF, 2147483648.0f, CNumberRow::read},
    {"f32", 0x3DFCD6EA, FromBits(0x3DFCD6EA)},
    {"f32", 0x80000000, -0.0f},
    {"f32", 0x7FC12345, FromBits(0x7FC12345)},
    {"f32", 0xFFA00001, FromBits(0xFFA00001)},
    {"f64", 0x3FB99999A0000000, 0.1f},
    {"f64", 0x36A0000000000000, 1e-45f},
    {"f64", 0xFFF0000000000000, -kInf},
    {"f64", 0x7FF8000000000000, kNaN},
    // Rounded: to the even one of two, up, to the largest, to infinity, to 0.
    {"f64", 0x3FF0000010000000, 1, CNumberRow::read},
    {"f64", 0x3FF0000010000001, FromBits(0x3F800001), CNumberRow::read},
    {"f64", 0x47EFFFFFEFFFFFFF, FromBits(0x7F7FFFFF), CNumberRow::read},
    {"f64", 0x47EFFFFFF0000000, kInf, CNumberRow::read},
    {"f64", 0x8000000000000001, -0.0f, CNumberRow::read},
};

TEST(ModbusValues, AreReadAndWrittenBitByBitInEachOrder) {
  for (const COrdered& order : kOrders)
    for (const CNumberRow& row : kNumbers) {
      std::vector<modbus::CEntry> entries;
      ASSERT_EQ(modbus::ReadEntries(std::string("h3:") + row.type + "\t" + order.order, 0, entries), "");
      const modbus::CValue& value = entries[0].first;
      CBytes wire;
      for (const std::uint16_t word : OnTheWire(row.number, modbus::SizeOf(value.type), order))
        wire.insert(wire.end(), {std::uint8_t(word >> 8), std::uint8_t(word)});
      const float read = row.way == CNumberRow::write ? row.value : modbus::FromRegisters(value, wire.data());
      EXPECT_EQ(Bits(read), Bits(row.value)) << row.type << order.order;
      if (row.way == CNumberRow::read) continue;
      CBytes written(wire.size());
      EXPECT_TRUE(modbus::ToRegisters(value, row.value, written.data()));
      EXPECT_EQ(written, wire) << row.type << ' ' << row.value << order.order;
    }
}

TEST_F(Modbus, SendsNothingIfAValueDoesNotFitItsType) {
  const std::pair<const char*, CValues> kMisfits[] = {
      {"u16", {65535.6f, -0.6f, kNaN}},
      {"i16", {32768, -32769, -kInf}},
      {"u32", {4294967296.0f, -1, kNaN}},
      {"i32", {2147483648.0f, -2147483904.0f, kInf}},
  };
  CModbusServer server;
  for (const auto& [type, values] : kMisfits)
    for (const float value : values) {
      CDriverNode node = Node(At(server, std::string("h20, h21 : ") + type), 2, kWrite);
      EXPECT_FALSE(node.Write({7, value})) << type << ' ' << value;
      EXPECT_TRUE(Has(node.Fault(), std::string(" does not fit ") + type + ", holding register"));
    }
  EXPECT_EQ(server.TakeLog(), "");
}

TEST_F(Modbus, ReadsAndWritesBits) {
  CModbusServer server;
  server.Put('c', 9, {1, 0, 1, 1, 0, 0, 0, 1, 0, 1});
  server.Put('d', 65533, {0, 1, 1});
  EXPECT_EQ((CValues{1, 0, 1, 1, 1, 0, 1, 1, 0}),
            Node(At(server, "C 9X4, d65535, d65533, c16, c18,\tc17"), 9).Read());
  CDriverNode writer = Node(At(server, "c9 x 10, c30"), 11, kWrite);
  EXPECT_TRUE(writer.Write({0, -0.0f, 0.5f, -1, kInf, 1e-45f, 0, 0, 1, 0, 2}));
  EXPECT_EQ(server.Get('c', 9, 10), (CWords{0, 0, 1, 1, 1, 1, 0, 0, 1, 0}));
  EXPECT_EQ(server.Get('c', 30, 1), CWords{1});
  EXPECT_FALSE(writer.Write({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, kNaN}));
  EXPECT_TRUE(Has(writer.Fault(), "nan does not fit bit, coil 30")) << writer.Fault();
}

TEST_F(Modbus, AsksTheUnitOfItsNodeAtTheAddressesThatAreMeant) {
  CModbusServer server({0, 1, 2, 255});
  for (const int unit : {0, 1, 2, 255})
    for (const char kind : {'h', 'i', 'c', 'd'})
      server.Put(kind, 65534, {std::uint16_t(unit != 2), std::uint16_t(unit)}, unit);
  for (const int unit : {0, 2, 255, 3}) {
    DriverConfig config = At(server, "h65544, i65545, c65545, d65544");
    config.station = unit;
    config.registerAddress = -10;
    CDriverNode node = Node(config, 4);
    const float value = static_cast<float>(unit), bit = unit != 0, other = unit != 2;
    EXPECT_EQ(node.Read(), unit == 3 ? CValues{} : (CValues{other, value, bit, other}));
    EXPECT_EQ(Has(node.Fault(), " unit 3: exception 11 "), unit == 3) << node.Fault();
  }
}

TEST_F(Modbus, JoinsWhatItMayAndSplitsNoValue) {
  const struct {
    const char* list;
    UINT count;
    int most, single;  // value3, value4
    const char* requests;
  } kRows[] = {
      {"h2, i1, h0, i0, h1", 5, 0, 0, "3 0+3, 4 0+2, "},
      {"i0, i9", 2, 0, 0, "4 0+10, "},
      {"i0, i10", 2, 0, 0, "4 0+1, 4 10+1, "},
      {"h6: u32, h16", 2, 0, 0, "3 6+11, "},
      {"d9, d0", 2, 0, 0, "2 0+10, "},
      {"d10, d0", 2, 0, 0, "2 0+1, 2 10+1, "},
      {"h10 x 126", 126, 0, 0, "3 10+125, 3 135+1, "},
      {"c3 x 2001", 2001, 0, 0, "1 3+2000, 1 2003+1, "},
      {"h0 x 32 : f64", 32, 0, 0, "3 0+124, 3 124+4, "},
      {"h0 x 2 : u32", 2, 2, 0, "3 0+2, 3 2+2, "},
      {"c0 x 161", 161, 10, 0, "1 0+160, 1 160+1, "},
      {"h0, h4", 2, 4, 0, "3 0+1, 3 4+1, "},
      {"h0: f64, h1, h0 x 3, h1: u32", 6, 0, 0, "3 0+4, "},
      {"h0, h1, h1", 3, 0, 1, "3 0+1, 3 1+1, 3 1+1, "},
      {"h0 x 2: f32", 2, 0, 3, "3 0+2, 3 2+2, "},
      {"h0, h1", 2, 0, 2, "3 0+2, "},
      {"h5", 1, 0, 0, "6 5+1, "},
      {"c5", 1, 0, 0, "5 5+1, "},
      {"h0: f32", 1, 0, 0, "16 0+2, "},
      {"c0 x 3", 3, 0, 0, "15 0+3, "},
      {"h0, h2", 2, 0, 0, "6 0+1, 6 2+1, "},
      {"h1, h0", 2, 0, 0, "6 1+1, 6 0+1, "},
      {"h0, c1, h1", 3, 0, 0, "6 0+1, 5 1+1, 6 1+1, "},
      {"h0 x 125", 125, 0, 0, "16 0+123, 16 123+2, "},
      {"h0 x 31 : f64", 31, 0, 0, "16 0+120, 16 120+4, "},
      {"c0 x 1969", 1969, 0, 0, "15 0+1968, 5 1968+1, "},
      {"h0 x 5", 5, 2, 0, "16 0+2, 16 2+2, 6 4+1, "},
      {"h0, h1, c0, c1", 4, 0, 1, "6 0+1, 6 1+1, 5 0+1, 5 1+1, "},
  };
  CModbusServer server;
  for (const auto& row : kRows) {
    DriverConfig config = At(server, row.list);
    config.value3 = row.most;
    config.value4 = row.single;
    CValues values(row.count);
    for (UINT i = 0; i < row.count; ++i) values[i] = Has(row.list, "c") ? 1 : static_cast<float>(i + 1);
    const bool writes = std::stoi(row.requests) > 4;
    CDriverNode node = Node(config, row.count, writes ? kWrite : CLink::modeRead);
    EXPECT_TRUE(writes ? node.Write(values) : node.Read().size() == row.count) << row.list;
    EXPECT_EQ(server.TakeLog(), row.requests) << row.list;
    const CValues back = Node(At(server, row.list), row.count).Read();
    EXPECT_EQ(back, writes ? values : back) << row.list;
    server.TakeLog();
  }
  EXPECT_TRUE(Node(At(server, "h3, h3"), 2, kWrite).Write({1, 2}));
  EXPECT_EQ(server.TakeLog(), "6 3+1, 6 3+1, ");
  EXPECT_EQ(server.Get('h', 3, 1), CWords{2});
}

class ModbusSettings : public Modbus {
 protected:
  // Opens a node with what stands in front of the arrow in row, for the words behind it; none: it opens.
  void Try(const std::string& row, bool isDevice, UINT count = 1, UINT mode = CLink::modeRead) {
    const std::size_t arrow = row.find(" ->");
    const std::string text = row.substr(0, arrow),
                      words = arrow == row.npos ? "" : row.substr(std::min(arrow + 4, row.size()));
    m_config.text1 = isDevice ? text.c_str() : m_device;
    m_config.text2 = isDevice ? "h0" : text.c_str();
    const std::string fault = Node(m_config, count, mode).Fault();
    EXPECT_EQ(fault.starts_with("Open Fatal Not named Modbus: "), arrow != row.npos) << row << ": " << fault;
    EXPECT_TRUE(Has(fault, words)) << row << ": " << fault;
  }
  DriverConfig m_config;
  const char* m_device = "127.0.0.1:1";
};

constexpr const char* kDevices = R"( -> text1: it is empty; :502 -> text1: ":502" has no host
plc: -> text1: "" is no port; plc:0 -> text1: "0" is no port; plc:65536 -> text1: "65536" is no port
plc:5x -> text1: "5x" is no port; two words -> text1: ; [::1 -> text1: ; [::1]5 -> text1: ; /dev/ttyS0 -> text1:
ttyS0:9600,8,N,1 -> text1: "ttyS0:9600,8,N,1" is no host:port
/dev/ttyS0:9600 -> text1: "9600" is not baud,bits,parity,stop; /dev/ttyS0:9600,8,N,1,2 -> text1:
/dev/ttyS0:9601,8,N,1 -> text1: "9601"; /dev/ttyS0:9600,7,N,1 -> text1: "7" data bits
/dev/ttyS0:9600,8,M,1 -> text1: "M" is no parity; /dev/ttyS0:9600,8,N,3 -> text1: "3" stop bits)";
constexpr const char* kLists = R"( -> text2: it is empty; h0, -> text2: entry 2; ,h0 -> text2: entry 1
x5 -> text2: entry 1, "x5"; 40001 -> h0; h -> text2: entry 1, "h": an address; h-1 -> an address
h99999999999 -> text2: entry 1; h1 2 -> "2" is too much; h1 x -> a number of values; h1 x 0 -> a number of values
h1 x 999999999 -> text2: entry 1; h1 : -> there is no type ""; h1: bit -> there is no type "bit"
c1: u16 -> a coil has no type; h1: f32 abdc -> there is no order "abdc"; h1: f32 abcd x 3 -> "x 3" is too much
h65536 -> 65536; h65535: f32 -> 65536; h65535; h0 x 2 -> text2: it lists 2 value(s), and the node has 1)";
constexpr const char* kListsOfTwo = R"(h0 -> text2: it lists 1 value(s); h0 x 3 -> lists 3
h65530 x 2: f64 -> 65537;  H 0 X1 :F32 CDAB , i7:i16)";

TEST_F(ModbusSettings, AreRefusedWithWordsThatTellWhich) {
  const auto TryAll = [this](std::string rows, bool areDevices, UINT count) {
    std::replace(rows.begin(), rows.end(), '\n', ';');
    std::istringstream stream(rows);
    for (std::string row; std::getline(stream, row, ';');) Try(row, areDevices, count);
  };
  m_config.station = 1;
  TryAll(kDevices, true, 1);
  TryAll(kLists, false, 1);
  TryAll(kListsOfTwo, false, 2);
  const std::string start = "x" + std::string(58, '0');
  Try(start + "\u00e4\u00e4 -> \"" + start + "...\"", false);
  Try("h0, d5 -> discrete input 5", false, 2, kWrite);
  Try("i5 -> input register 5", false, 1, kWrite);
  EXPECT_EQ(Node({}, 1, 7).Fault(), "Open Fatal Not named Invalid mode.\n");
}

TEST(ModbusEndpoint, IsWhatItsTextSays) {
  const std::pair<const char*, const char*> kRows[] = {{"plc", "plc:502"},
                                                       {" 127.0.0.1 : 1 ", "127.0.0.1:1"},
                                                       {"[::1]:65535", "[::1]:65535"},
                                                       {"fe80::1", "[fe80::1]:502"},
                                                       {" /dev/a:b , c:9600, 8, o, 2", "/dev/a:b , c"}};
  for (const auto& [text, name] : kRows) {
    modbus::CEndpoint endpoint;
    EXPECT_EQ(modbus::ReadEndpoint(text, endpoint), "");
    EXPECT_EQ(endpoint.name, name);
  }
}

TEST_F(ModbusSettings, ThatAreNumbersAreRefusedOutsideTheirBounds) {
  const struct {
    int DriverConfig::*number;
    int value;
    const char* row;
  } kRows[] = {
      {&DriverConfig::station, -1, "h0 -> station: -1"},
      {&DriverConfig::station, 256, "h0 -> station: 256"},
      {&DriverConfig::station, 255, "h0"},
      {&DriverConfig::timeOut, 60001, "h0 -> timeOut: 60001"},
      {&DriverConfig::value1, 60001, "h0 -> value1: 60001"},
      {&DriverConfig::value2, 60001, "h0 -> value2: 60001"},
      {&DriverConfig::value3, 126, "h0 -> value3: 126"},
      {&DriverConfig::value3, 3, "h0: f64 -> value3: 3 registers"},
      {&DriverConfig::value4, 4, "h0 -> value4: 4"},
      {&DriverConfig::registerAddress, -1, "h0 -> text2: entry 1, \"h0\": it has the addresses -1 to -1"},
      {&DriverConfig::registerAddress, 65535, "h0, h1 -> text2: entry 2, \"h1\""},
      {&DriverConfig::registerAddress, 2147483647, "h999999999 -> text2: entry 1"},
      {&DriverConfig::registerAddress, -2147483647 - 1, "h0 -> text2: entry 1"},
  };
  for (const auto& row : kRows) {
    m_config = {};
    m_config.*row.number = row.value;
    Try(row.row, false);
  }
  m_device = "/dev/ttyS0:9600,8,N,1";
  for (m_config.station = 0; m_config.station <= 248; m_config.station += 248) Try("h0 -> station: ", false);
}

using CSpoil = decltype(CReplyFault::spoil);
CSpoil Set(std::size_t at, int value) {
  return [=](CBytes& reply, const CBytes&) { reply.at(at) = static_cast<std::uint8_t>(value); };
}
CSpoil Cut(std::size_t size) {
  return [=](CBytes& reply, const CBytes&) { reply.resize(std::min(size, reply.size())); };
}
CSpoil Fill(std::size_t size, int value) {
  return [=](CBytes& reply, const CBytes&) { reply.assign(size, static_cast<std::uint8_t>(value)); };
}
// Bytes behind the reply, which the length of a TCP head counts.
CSpoil Lengthen(int by, bool counted) {
  return [=](CBytes& reply, const CBytes&) {
    reply.insert(reply.end(), static_cast<std::size_t>(by), 0);
    if (counted) reply.at(5) = static_cast<std::uint8_t>(reply.at(5) + by);
  };
}
// The reply to a request for other registers, as many as has, right in itself.
CSpoil Resize(int has) {
  return [=](CBytes& reply, const CBytes&) {
    reply.resize(static_cast<std::size_t>(9 + 2 * has));
    reply[5] = static_cast<std::uint8_t>(3 + 2 * has);
    reply[8] = static_cast<std::uint8_t>(2 * has);
  };
}
void Stale(CBytes& reply, const CBytes& former) { reply = former; }
void Twice(CBytes& reply, const CBytes&) {
  const CBytes once = reply;
  reply.insert(reply.end(), once.begin(), once.end());
}

void BeAWebServer(CBytes& reply, const CBytes&) {
  const std::string words = "HTTP/1.1 400 Bad Request\r\n\r\n";
  reply.assign(words.begin(), words.end());
}

struct CFaultRow {
  const char* name;
  CReplyFault fault;
  int timeOut;
  std::string line;  // what it has; empty: it succeeds
};

std::vector<CFaultRow> TcpFaults() {
  constexpr auto kCloses = CReplyFault::closes, kResets = CReplyFault::resets;
  const std::string kLost = " unit 1: ";
  std::vector<CFaultRow> rows = {
      {"slow", {{}, {}, 50}, kLong, ""},
      {"twice", {Twice}, kLong, ""},
      {"closes behind", {{}, kCloses}, kLong, ""},
      {"silent", {Cut(0)}, kShort, kTimeOut},
      {"too late", {{}, {}, 3 * kShort}, kShort, kTimeOut},
      {"drips too slowly", {{}, {}, 0, 60}, kShort, kBadFrame},
      {"closes", {Cut(0), kCloses}, kLong, kLost},
      {"resets", {Cut(0), kResets}, kLong, kLost},
      {"closes within", {Cut(10), kCloses}, kLong, kBadFrame},
      {"garbage", {Fill(13, 0xAA)}, kShort, kBadFrame},
      {"other request", {Set(0, 0x55)}, kLong, kBadFrame},
      {"stale", {Stale}, kLong, kBadFrame},
      {"other protocol", {Set(3, 1)}, kLong, kBadFrame},
      {"more counted", {Lengthen(2, true)}, kLong, kBadFrame},
      {"other unit", {Set(6, 2)}, kLong, kBadFrame},
      {"other function", {Set(7, 4)}, kLong, kBadFrame},
      {"exception that is longer", {Lengthen(1, true), {}, 0, 0, 2}, kLong, kBadFrame},
      {"less registers", {Resize(1)}, kLong, kBadFrame},
      {"too many bytes", {Set(8, 255)}, kLong, kBadFrame},
  };
  for (int code = 1; code <= 11; ++code)
    rows.push_back({"exception",
                    {{}, {}, 0, 0, code},
                    kLong,
                    kLost + "exception " + std::to_string(code) + (code == 9 ? "," : " (")});
  rows.push_back({"too long", {{}, {}, 0, 0, 3}, kLong, "holding registers 7 to 8; value3 makes"});
  for (const int code : {0, 12, 127, 255})
    rows.push_back({"unknown exception",
                    {Set(8, code), {}, 0, 0, 1},
                    kLong,
                    kLost + "exception " + std::to_string(code) + ", holding registers 7 to 8"});
  return rows;
}

// One device for each row, since each is left alone for a while behind its fault.
void RunFaults(CRecorder& recorder, std::vector<CFaultRow> rows, const std::string& path) {
  const CValues right = {258, 772};
  std::vector<std::unique_ptr<CModbusServer>> servers;
  std::vector<std::unique_ptr<CDriverNode>> nodes;
  for (const CFaultRow& row : rows) {
    const std::string line = path.empty() ? path : path + std::to_string(nodes.size());
    CModbusServer& server = *servers.emplace_back(std::make_unique<CModbusServer>(std::vector{1}, line));
    CDriverNode& node = *nodes.emplace_back(
        std::make_unique<CDriverNode>(recorder, kModbus, At(server, "h7, h8", row.timeOut), 2));
    server.Put('h', 7, {1, 2});
    ASSERT_TRUE(Recovers(node, {1, 2}));
    server.Put('h', 7, {258, 772});
    server.Spoil(row.fault);
    EXPECT_EQ(node.Read(), row.line.empty() ? right : CValues{}) << row.name;
    EXPECT_EQ(node.Fault().empty(), row.line.empty()) << row.name << ": " << node.Fault();
    EXPECT_TRUE(Has(node.Fault(), row.line)) << row.name << ": " << node.Fault();
    const bool isNamed = Has(node.Fault(), server.Name()) && Has(node.Fault(), "holding registers 7 to 8");
    EXPECT_EQ(Has(node.Fault(), " unit 1: "), isNamed) << row.name << ": " << node.Fault();
  }
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    servers[i]->Put('h', 7, {513, 3});
    EXPECT_TRUE(Recovers(*nodes[i], {513, 3})) << rows[i].name;
  }
}

TEST_F(Modbus, TellsEachFaultByItsStatusAndReadsOnWithoutAWrongValue) {
  RunFaults(m_recorder, TcpFaults(), {});
}

TEST_F(Modbus, TakesNoReplyForASuccessThatDoesNotRepeatWhatWasWritten) {
  const struct {
    const char *name, *list;
    CReplyFault fault;
    std::string line;
  } kRows[] = {
      {"other address", "h7 x 2", {Set(9, 8)}, kBadFrame},
      {"other count", "h7 x 2", {Set(11, 1)}, kBadFrame},
      {"other function", "h7 x 2", {Set(7, 15)}, kBadFrame},
      {"other value", "h7, h9", {Set(11, 5)}, kBadFrame},
      {"other bit", "c7, c9", {Set(10, 0x00)}, kBadFrame},
      {"stale", "h9, h7", {Stale}, kBadFrame},
      {"silent", "h7 x 2", {Cut(0)}, kTimeOut},
      {"refused", "h7 x 2", {{}, {}, 0, 0, 4}, " unit 1: exception 4 "},
      {"closed", "c7 x 2", {Cut(0), CReplyFault::closes}, " unit 1: "},
  };
  CModbusServer servers[std::size(kRows)];
  std::vector<CDriverNode> nodes;
  for (std::size_t i = 0; i < std::size(kRows); ++i) {
    nodes.push_back(Node(At(servers[i], kRows[i].list, kShort), 2, kWrite));
    EXPECT_TRUE(Soon([&] { return nodes[i].Write({0, 3}); }));
    servers[i].Spoil(kRows[i].fault);
    EXPECT_FALSE(nodes[i].Write({1, 2})) << kRows[i].name;
    EXPECT_TRUE(Has(nodes[i].Fault(), kRows[i].line)) << kRows[i].name << ": " << nodes[i].Fault();
  }
  for (std::size_t i = 0; i < std::size(kRows); ++i)
    EXPECT_TRUE(Soon([&] { return nodes[i].Write({1, 2}); })) << kRows[i].name;
}

TEST_F(Modbus, FindsADeviceThatAppearsLater) {
  CModbusServer server;
  server.Stop();
  CDriverNode node = Node(At(server, "h0"), 1), writer = Node(At(server, "h1"), 1, kWrite);
  EXPECT_EQ(writer.Fault(), "");
  EXPECT_EQ(node.Read(), CValues{});
  EXPECT_TRUE(Has(node.Fault(), "Error Not named Modbus " + server.Name() + " unit 1: no connection: "))
      << node.Fault();
  EXPECT_FALSE(writer.Write({1}));
  server.Start();
  EXPECT_TRUE(Recovers(node, {0}));
  EXPECT_TRUE(Soon([&] { return writer.Write({5}); }));
  EXPECT_EQ(server.Get('h', 1, 1), CWords{5});
}

TEST_F(Modbus, KeepsItsConnectionUnlessItIsToldToClose) {
  for (const int closes : {0, 2}) {
    CModbusServer server;
    DriverConfig config = At(server, "h0, h20");
    config.value1 = closes ? 0 : 5;
    config.value2 = closes ? 9 : 0;
    config.value4 = closes;
    const auto begin = steady_clock::now();
    CDriverNode node = Node(config, 2);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(node.Read(), (CValues{0, 0})) << node.Fault();
    EXPECT_LE(milliseconds(45), steady_clock::now() - begin) << "its pauses";
    EXPECT_EQ(server.Connections(), closes ? 5 : 1);
    EXPECT_EQ(server.TakeLog().size(), 5u * std::string("3 0+1, 3 20+1, ").size());
  }
}

TEST_F(Modbus, FindsADeviceByItsName) {
  CModbusServer server;
  DriverConfig config = At(server, "h0");
  config.text1 = ("localhost:" + server.Name().substr(10)).c_str();
  EXPECT_EQ(Node(config, 1).Read(), CValues{0});
  config.text1 = std::string(64, 'a').c_str();
  CDriverNode missing = Node(config, 1);
  EXPECT_EQ(missing.Read(), CValues{});
  EXPECT_TRUE(Has(missing.Fault(), "has no address")) << missing.Fault();
}

TEST_F(Modbus, LosesNoScanWhenTheDeviceClosedBeforeTheFirst) {
  CModbusServer server;
  DriverConfig config = At(server, "h0");
  config.value2 = 50;
  CDriverNode node = Node(config, 1);
  EXPECT_TRUE(Soon([&] { return server.Connections() == 1; }));
  server.Drop(false);
  EXPECT_EQ(node.Read(), CValues{0}) << node.Fault();
}

TEST_F(Modbus, ReadsADeviceThatClosesBehindEachReply) {
  CModbusServer server;
  for (int i = 0; i < 1000; ++i) server.Spoil({i == 7 ? Cut(0) : CSpoil(), CReplyFault::closes});
  DriverConfig config = At(server, "h0, h20");
  config.value1 = 20;
  CDriverNode node = Node(config, 2);
  for (int i = 0; i < 5; ++i) EXPECT_TRUE(Recovers(node, {0, 0}));
}

TEST_F(Modbus, ReadsOnFromADeviceWhileAnotherHangs) {
  CModbusServer hanging, server;
  hanging.Spoil({Cut(0)});
  CDriverNode stuck = Node(At(hanging, "h0", 60000), 1), node = Node(At(server, "h0"), 1);
  std::atomic<bool> returned = false;
  std::thread other([&] {
    stuck.Read();
    returned = true;
  });
  EXPECT_TRUE(Soon([&] { return !hanging.TakeLog().empty(); }));
  for (int i = 0; i < 50; ++i) EXPECT_EQ(node.Read(), CValues{0});
  EXPECT_EQ(Node(At(server, "h0"), 1).Read(), CValues{0}) << "nor does an Open wait";
  EXPECT_FALSE(returned);
  hanging.Stop();
  other.join();
}

// A connection without the module round it, which lets its pauses be chosen.
class ModbusPauses : public testing::Test {
 protected:
  std::unique_ptr<modbus::CConnection> Open(int first, int longest, int timeOut = kLong) const {
    return Open(first, longest, timeOut, m_server);
  }
  static std::unique_ptr<modbus::CConnection> Open(int first, int longest, int timeOut,
                                                   const CModbusServer& server) {
    DriverConfig config = At(server, "h0", timeOut);
    config.variableCount = 1;
    modbus::CSettings settings;
    EXPECT_EQ(modbus::ReadSettings(ToRecord(config), false, settings), "");
    settings.pauses = {milliseconds(first), milliseconds(longest)};
    std::string fault;
    return std::make_unique<modbus::CConnection>(settings, modbus::NewLine(settings, fault));
  }
  static bool Tried(const modbus::CConnection& node) { return !Has(node.LastError(), "next attempt"); }
  static constexpr int kForEver = 100'000'000;
  CModbusServer m_server;
  float m_value = 0;
};

TEST_F(ModbusPauses, GrowUntilTheLongest) {
  m_server.Stop();
  const auto growing = Open(10, kForEver), short_ = Open(1, 1);
  int attempts = 0, shortAttempts = 0;
  const auto end = steady_clock::now() + milliseconds(400);
  while (steady_clock::now() < end || shortAttempts < 40) {
    EXPECT_EQ(growing->Read(&m_value, 1), statusExtendedError);
    EXPECT_EQ(short_->Read(&m_value, 1), statusExtendedError);
    if (steady_clock::now() < end) attempts += Tried(*growing);
    shortAttempts += Tried(*short_);
    Nap();
  }
  EXPECT_GT(attempts, 1);
  EXPECT_LT(attempts, 8) << "0, 10, 30, 70, 150, 310 ms";
}

// In the time of two time-outs there are many calls, with one that is not accepted as with one that is deaf.
TEST_F(ModbusPauses, AreNotFollowedByAWaitForADeviceThatHangs) {
  for (const bool isAccepted : {true, false}) {
    m_server.SetDeaf(true);
    std::vector<std::unique_ptr<modbus::CConnection>> queue;
    for (int i = 0; i < 20 && !isAccepted; ++i) queue.push_back(Open(1, 1));
    const auto node = Open(1, 1, 200);
    EXPECT_EQ(node->Read(&m_value, 1), isAccepted ? statusTimeout : statusExtendedError) << node->LastError();
    int calls = 0, timeOuts = 0;
    for (const auto end = steady_clock::now() + milliseconds(450); steady_clock::now() < end;) {
      const int status = node->Read(&m_value, 1);
      EXPECT_NE(statusOk, status);
      timeOuts += status == statusTimeout;
      calls += Tried(*node);
    }
    EXPECT_GT(calls, 10);
    EXPECT_EQ(timeOuts > 0, isAccepted) << "the question whether it is back has an end, too";
    m_server.SetDeaf(false);
    EXPECT_TRUE(Soon([&] { return node->Read(&m_value, 1) == statusOk; })) << node->LastError();
    m_server.Drop(false);
    m_server.Spoil({{}, {}, 50});
    EXPECT_EQ(node->Read(&m_value, 1), statusOk) << "it has answered: " << node->LastError();
  }
}

TEST_F(ModbusPauses, NameTheBadReplyBeforeThem) {
  const auto node = Open(0, 0);
  EXPECT_EQ(node->Read(&m_value, 1), statusOk);
  m_server.Spoil({Twice});
  EXPECT_EQ(node->Read(&m_value, 1), statusOk);
  EXPECT_EQ(node->Read(&m_value, 1), statusInvalidFrame);
  EXPECT_TRUE(Has(node->LastError(), "it came without a request")) << node->LastError();
  ASSERT_TRUE(Soon([&] { return node->Read(&m_value, 1) == statusOk; })) << node->LastError();
  m_server.Spoil({BeAWebServer, CReplyFault::closes});
  EXPECT_EQ(node->Read(&m_value, 1), statusInvalidFrame);
  EXPECT_TRUE(Has(node->LastError(), "it is of another protocol")) << node->LastError();
}

TEST_F(ModbusPauses, BeginAnewOnceTheDeviceHasAnsweredBeItWithAnException) {
  const auto node = Open(1, kForEver);
  EXPECT_EQ(node->Read(&m_value, 1), statusOk);
  for (int i = 0; i < 24; ++i) {
    const bool refuses = i < 12;
    m_server.Spoil({Cut(0), CReplyFault::closes});
    EXPECT_EQ(node->Read(&m_value, 1), statusExtendedError);
    for (int k = 0; refuses && k < 2; ++k) m_server.Spoil({{}, {}, 0, 0, 2});
    const int wanted = refuses ? statusReplyError : statusOk;
    ASSERT_TRUE(Soon([&] { return node->Read(&m_value, 1) == wanted; })) << node->LastError();
  }
}

TEST_F(ModbusPauses, FollowABadFrameButNotASingleOneOfALine) {
  CModbusServer line({1}, PathOfLine());
  for (CModbusServer* server : {&m_server, &line}) {
    const auto node = Open(kForEver, kForEver, kLong, *server);
    for (int i = 0; i < 5; ++i) {
      EXPECT_EQ(node->Read(&m_value, 1), statusOk) << node->LastError();
      server->Spoil({Set(server == &line ? 4 : 6, 9)});
      EXPECT_EQ(node->Read(&m_value, 1), statusInvalidFrame);
      if (server == &m_server) break;
    }
    if (server == &line) line.Spoil({Set(4, 9)}), node->Read(&m_value, 1);
    EXPECT_EQ(node->Read(&m_value, 1), statusExtendedError);
    EXPECT_FALSE(Tried(*node)) << node->LastError();
    EXPECT_EQ(node->Read(&m_value, 2), statusExtendedError);
    EXPECT_TRUE(Has(node->LastError(), "number of values")) << node->LastError();
  }
}

std::ptrdiff_t Entries(const char* folder) {
  return std::distance(std::filesystem::directory_iterator(folder), {});
}

TEST_F(ModbusPauses, LeaveNothingBehindHoweverOftenAConnectionGoes) {
  CRecorder recorder;
  CDriverNode idle(recorder, kModbus, At(m_server, "h0"), 1);
  const auto failing = Open(0, 0);
  EXPECT_EQ(idle.Read(), CValues{0});
  EXPECT_EQ(failing->Read(&m_value, 1), statusOk);
  const auto files = Entries("/proc/self/fd"), threads = Entries("/proc/self/task");
  for (int i = 0; i < 2000; ++i) {
    m_server.Drop(true);
    ASSERT_EQ(CValues{0}, idle.Read()) << idle.Fault();
    if (i % 20) continue;
    m_server.Spoil(i % 40 ? CReplyFault{Cut(9), CReplyFault::resets} : CReplyFault{Set(6, 9)});
    failing->Read(&m_value, 1);
    CDriverNode(recorder, kModbus, At(m_server, "h0"), 1);
    ASSERT_TRUE(Soon([&] { return failing->Read(&m_value, 1) == statusOk; }));
  }
  m_server.Stop();
  for (int i = 0; i < 9; ++i) failing->Read(&m_value, 1);
  m_server.Start();
  EXPECT_TRUE(Soon([&] { return failing->Read(&m_value, 1) == statusOk; }));
  EXPECT_EQ(idle.Read(), CValues{0});
  EXPECT_TRUE(Soon([&] { return Entries("/proc/self/fd") == files; })) << Entries("/proc/self/fd") - files;
  EXPECT_EQ(Entries("/proc/self/task"), threads);
}

TEST_F(Modbus, SharesALineWithItsUnitsAmongNodesOnTwoThreads) {
  CModbusServer line({1, 2}, PathOfLine());
  line.Put('h', 7, {1, 2, 3});
  line.Put('h', 7, {4, 5, 6}, 2);
  DriverConfig first = At(line, "h7 x 3"), second = first, wanted = first,
               missing = At(line, "h7 x 3", kShort);
  second.station = 2;
  second.text1 =
      (std::filesystem::canonical(line.Name()).string() + ":115200,8,E,1").c_str();  // its other name
  missing.station = 3;
  CDriverNode one = Node(first, 3), two = Node(second, 3),
              writer = Node(At(line, "h20 x 2: f32 cdab, c3"), 3, kWrite);
  const auto begin = steady_clock::now();
  std::thread other([&] {
    for (int i = 0; i < 60; ++i) EXPECT_EQ(two.Read(), (CValues{4, 5, 6}));
  });
  for (int i = 0; i < 60; ++i) EXPECT_EQ(one.Read(), (CValues{1, 2, 3}));
  other.join();
  EXPECT_LE(std::chrono::microseconds(119 * 1750), steady_clock::now() - begin) << "the silence of a line";
  EXPECT_TRUE(writer.Write({1.5f, -2, 1}));
  EXPECT_EQ(line.Get('h', 20, 4), (CWords{0, 0x3FC0, 0, 0xC000}));
  EXPECT_EQ(line.Get('c', 3, 1), CWords{1});
  CDriverNode nobody = Node(missing, 3);
  EXPECT_EQ(nobody.Read(), CValues{});
  EXPECT_TRUE(Has(nobody.Fault(), kTimeOut)) << nobody.Fault();
  wanted.text1 = (line.Name() + ":9600,8,E,1").c_str();
  EXPECT_TRUE(Has(Node(wanted, 3).Fault(), "Open Fatal Not named Modbus: text1: "))
      << "other settings of the line";
}

TEST_F(Modbus, TellsTheFaultsOfALineAndReadsOnBehindThem) {
  const std::vector<CFaultRow> rows = {
      {"slow", {{}, {}, 50}, kLong, ""},
      {"drips", {{}, {}, 0, 2}, kLong, ""},
      {"more behind", {Lengthen(5, false)}, kShort, ""},
      {"silent", {Cut(0)}, kShort, kTimeOut},
      {"too late", {{}, {}, 3 * kShort / 2}, kShort, kTimeOut},
      {"check sum", {Set(8, 0x99)}, kLong, kBadFrame},
      {"other value", {Set(4, 0x99)}, kLong, kBadFrame},
      {"other unit", {Set(0, 2)}, kShort, kBadFrame},
      {"other function", {Set(1, 4)}, kLong, kBadFrame},
      {"too many bytes", {Set(2, 255)}, kLong, kBadFrame},
      {"less bytes", {Set(2, 2)}, kLong, kBadFrame},
      {"cut", {Cut(6)}, kShort, kBadFrame},
      {"garbage", {Fill(40, 0xAA)}, kShort, kBadFrame},
      {"exception", {{}, {}, 0, 0, 6}, kLong, " unit 1: exception 6 "},
  };
  RunFaults(m_recorder, rows, PathOfLine());
}

CSpoil Behind(const CBytes& bytes) {
  return [=](CBytes& reply, const CBytes&) { reply.insert(reply.begin(), bytes.begin(), bytes.end()); };
}
const CBytes kOfOthers = {2, 3, 2, 0, 9, 0x3C, 0x42, 0, 3, 2, 0, 9, 0x45, 0x82};  // units 2 and 0

TEST_F(Modbus, TakesNoReplyOfALineForThatToAnotherRequest) {
  const struct {
    const char* name;
    CReplyFault fault;
    bool succeeds;
  } kRows[] = {{"twice", {Twice}, true},
               {"behind those of others", {Behind(kOfOthers)}, true},
               {"late", {{}, {}, 3 * kShort / 2}, false},
               {"late, behind those of others", {Behind(kOfOthers), {}, 3 * kShort / 2, 1}, false},
               {"behind noise", {Behind({1, 0x83, 2, 0, 0}), {}, 0, 1}, false}};
  CModbusServer line({1}, PathOfLine());
  line.Put('h', 7, {1, 2});
  CDriverNode next = Node(At(line, "h8"), 1);
  for (const auto& row : kRows) {
    line.Spoil(row.fault);
    EXPECT_EQ(Node(At(line, "h7", kShort), 1).Read(), row.succeeds ? CValues{1} : CValues{}) << row.name;
    EXPECT_EQ(next.Read(), CValues{2}) << row.name << ": " << next.Fault();
  }
}

TEST_F(Modbus, SetsItsLineAndKeepsThePausesOfIt) {
  CModbusServer line({1}, PathOfLine());
  DriverConfig config = At(line, "h0, h20");
  config.text1 = (line.Name() + ":600,8,o,2").c_str();
  config.value2 = 200;
  const auto begin = steady_clock::now();
  CDriverNode node = Node(config, 2);
  EXPECT_EQ(node.Read(), (CValues{0, 0}));
  EXPECT_LE(std::chrono::microseconds(264'166), steady_clock::now() - begin) << "and 3.5 characters";
  termios set = {};
  const int file = ::open(line.Name().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  ::tcgetattr(file, &set);
  ::close(file);
  EXPECT_EQ(::cfgetospeed(&set), speed_t{B600});
  EXPECT_EQ(set.c_cflag & (CSTOPB | PARODD), tcflag_t{CSTOPB | PARODD});
}

TEST_F(Modbus, LosesNoScanWhenAnotherNodeClosesTheLineBehindItsOwn) {
  CModbusServer line({1, 2}, PathOfLine());
  DriverConfig first = At(line, "h7, h70"), second = first;
  second.station = 2;
  first.value4 = 2;
  CDriverNode one = Node(first, 2), two = Node(second, 2);
  std::thread other([&] {
    for (int i = 0; i < 100; ++i) one.Read();
  });
  for (int i = 0; i < 100; ++i) EXPECT_EQ(two.Read(), (CValues{0, 0}));
  other.join();
}

TEST_F(Modbus, FindsALineAgainThatWasGone) {
  CModbusServer line({1}, PathOfLine());
  line.Stop();
  CDriverNode node = Node(At(line, "h7"), 1);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(node.Read(), CValues{});
    EXPECT_TRUE(Has(node.Fault(), "Error Not named Modbus " + line.Name() + " unit 1: ")) << node.Fault();
    line.Start();
    EXPECT_TRUE(Recovers(node, {0}));
    line.Stop();
  }
}

}  // namespace
}  // namespace vastra
