#include <fcntl.h>
#include <gtest/gtest.h>
#include <termios.h>

#include <bit>
#include <chrono>
#include <cmath>
#include <numeric>
#include <sstream>

#include "drivers/modbus/connection.h"
#include "drivers/modbus/endpoint.h"
#include "tests/drivers/modbus_server.h"
#include "vastra/plc/driver_config.h"

namespace vastra {
namespace {

using CValues = std::vector<float>;
using std::chrono::milliseconds;
using std::chrono::steady_clock;
constexpr int kLong = 10000;   // milliseconds: a time-out that must not come
constexpr int kMiddle = 1000;  // one that comes, after a part of a reply
constexpr int kShort = 300;    // one that comes
constexpr int kForEver = 100'000'000;

bool Has(const std::string& text, const std::string& piece) { return text.find(piece) != std::string::npos; }

std::string PathOfLine() { return testing::TempDir() + "modbus_line_" + std::to_string(::getpid()); }

DriverConfig At(const CModbusServer& server, const std::string& list, int unit = 1, int timeOut = kLong) {
  DriverConfig config;
  config.text1 = (server.Name() + (server.Name().front() == '/' ? ":115200,8,E,1" : "")).c_str();
  config.text2 = list.c_str();
  config.station = unit;
  config.timeOut = timeOut;
  return config;
}

template <class Try>
testing::AssertionResult Soon(Try attempt) {
  for (const auto end = steady_clock::now() + std::chrono::seconds(25); steady_clock::now() < end;
       std::this_thread::sleep_for(milliseconds(1)))
    if (attempt()) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "for 25 s";
}

// A connection without the module round it, which lets its pauses be chosen.
class CNode {
 public:
  explicit CNode(DriverConfig config, bool writes = false, int pause = 0, int longestPause = 0) {
    std::vector<modbus::CEntry> entries;
    EXPECT_EQ(modbus::ReadEntries(config.text2.View(), config.registerAddress, entries), "");
    config.variableCount = static_cast<UINT>(modbus::CountOf(entries));
    modbus::CSettings settings;
    EXPECT_EQ(modbus::ReadSettings(ToRecord(config), writes, settings), "");
    settings.pauses = {milliseconds(pause), milliseconds(longestPause)};
    std::string fault;
    m_values.resize(config.variableCount);
    m_connection = std::make_unique<modbus::CConnection>(settings, modbus::NewLine(settings, fault));
  }

  CValues Read() {
    status = m_connection->Read(m_values.data(), static_cast<int>(m_values.size()));
    return status == statusOk ? m_values : CValues();
  }
  bool Write(const CValues& values) {
    status = m_connection->Write(values.data(), static_cast<int>(values.size()));
    return status == statusOk;
  }
  std::string Words() const { return m_connection->LastError(); }
  bool HasTried() const { return !Has(Words(), "next attempt"); }

  int status = statusOk;  // of the last call

 private:
  CValues m_values;
  std::unique_ptr<modbus::CConnection> m_connection;
};

// The bytes of a number in each order, from its highest on: of 16, 32 and 64 bits.
constexpr struct {
  const char *order, *places[3];
} kOrders[] = {{"", {"AB", "ABCD", "ABCDEFGH"}},
               {"abcd", {"AB", "ABCD", "ABCDEFGH"}},
               {"cdab", {"AB", "CDAB", "GHEFCDAB"}},
               {"badc", {"BA", "BADC", "BADCFEHG"}},
               {"DCBA", {"BA", "DCBA", "HGFEDCBA"}}};

CBytes OnTheWire(std::uint64_t number, const std::string& places) {
  CBytes bytes;
  for (const char place : places)
    bytes.push_back(static_cast<std::uint8_t>(number >> 8 * (int(places.size()) - 1 - (place - 'A'))));
  return bytes;
}

std::uint32_t Bits(float value) { return std::bit_cast<std::uint32_t>(value); }

// A number on the wire and its value, which may be rounded when it is written.
constexpr struct {
  const char* type;
  std::uint64_t number;
  float value;
  bool isRounded = false;
} kNumbers[] = {
    {"u16", 0xFFFE, 65534},
    {"u16", 0xFFFF, 65535.4f, true},
    {"u16", 0, -0.4f, true},
    {"i16", 0x8001, -32767},
    {"i16", 0xFFFE, -1.6f, true},
    {"u32", 0x00010203, 66051},
    {"u32", 0xFFFFFF00, 4294967040.0f},
    {"i32", 0x80000000, -2147483648.0f},
    {"i32", 0x7FFFFF80, 2147483520},
    {"f32", 0xFFA00001, std::bit_cast<float>(0xFFA00001)},
    {"f64", 0x3FB99999A0000000, 0.1f},
    {"f64", 0x7FF8000000000000, NAN},
};
const std::pair<const char*, CValues> kMisfits[] = {{"u16", {65535.6f, -0.6f, NAN}},
                                                    {"i16", {32768, -32769, -INFINITY}},
                                                    {"u32", {4294967296.0f, -1, NAN}},
                                                    {"i32", {2147483648.0f, -2147483904.0f, INFINITY}}};

modbus::CValue Typed(const std::string& type) {
  std::vector<modbus::CEntry> entries;
  EXPECT_EQ(modbus::ReadEntries("h3:" + type, 0, entries), "");
  return entries.at(0).first;
}

TEST(ModbusValues, AreReadAndWrittenBitByBitInEachOrder) {
  for (const auto& [order, places] : kOrders)
    for (const auto& [type, number, value, isRounded] : kNumbers) {
      const modbus::CValue typed = Typed(std::string(type) + '\t' + order);
      const CBytes wire = OnTheWire(number, places[modbus::SizeOf(typed.type) / 2]);
      const float read = isRounded ? value : modbus::FromRegisters(typed, wire.data());
      EXPECT_EQ(Bits(read), Bits(value)) << type << order;
      CBytes written(wire.size());
      EXPECT_TRUE(modbus::ToRegisters(typed, value, written.data())) << type << value;
      EXPECT_EQ(written, wire) << type << ' ' << value << order;
    }
}

TEST(ModbusValues, AreNotWrittenWhenTheyDoNotFitTheirType) {
  std::uint8_t unused[8];
  for (const auto& [type, values] : kMisfits)
    for (const float value : values)
      EXPECT_FALSE(modbus::ToRegisters(Typed(type), value, unused)) << type << ' ' << value;
  CModbusServer server;
  CNode node(At(server, "c3, h20 : i16"), true);
  EXPECT_FALSE(node.Write({7, 32768}));
  EXPECT_TRUE(Has(node.Words(), " 32768 does not fit i16, holding register 20")) << node.Words();
  EXPECT_FALSE(node.Write({NAN, 1}));
  EXPECT_TRUE(Has(node.Words(), " nan does not fit bit, coil 3")) << node.Words();
  EXPECT_EQ(server.TakeLog(), "");
}

TEST(Modbus, ReadsAndWritesBits) {
  CModbusServer server;
  server.Put('c', 9, {1, 0, 1, 1, 0, 0, 0, 1, 0, 1});
  server.Put('d', 65533, {0, 1, 1});
  EXPECT_EQ(CNode(At(server, "C 9X4, d65535, d65533, c16, c18,\tc17")).Read(),
            (CValues{1, 0, 1, 1, 1, 0, 1, 1, 0}));
  EXPECT_TRUE(
      CNode(At(server, "c9 x 10, c30"), true).Write({0, -0.0f, 0.5f, -1, INFINITY, 1e-45f, 0, 0, 1, 0, 2}));
  EXPECT_EQ(CNode(At(server, "c9 x 10, c30")).Read(), (CValues{0, 0, 1, 1, 1, 1, 0, 0, 1, 0, 1}));
}

TEST(Modbus, AsksTheUnitOfItsNodeAtTheAddressesThatAreMeant) {
  CModbusServer server({0, 255});
  for (const char kind : {'h', 'i', 'c', 'd'}) server.Put(kind, 65534, {1, 0}, 255);
  for (const auto& [unit, values] : {std::pair(255, CValues{1, 0, 0, 1}), {0, CValues(4)}, {3, CValues()}}) {
    DriverConfig config = At(server, "h65544, i65545, c65545, d65544", unit);
    config.registerAddress = -10;
    CNode node(config);
    EXPECT_EQ(node.Read(), values) << unit;
    EXPECT_EQ(Has(node.Words(), " unit 3: exception 11 "), unit == 3) << node.Words();
  }
}

// Each row is a text, an arrow, and a part of the outcome of the text; none: the outcome is empty.
template <class Outcome>
void ExpectOutcomes(std::string rows, Outcome outcomeOf) {
  std::replace(rows.begin(), rows.end(), '\n', ';');
  std::istringstream stream(rows);
  for (std::string row; std::getline(stream, row, ';');) {
    const std::size_t arrow = row.find(" ->");
    const std::string outcome = outcomeOf(row.substr(0, arrow)), words = row.substr(arrow + 3);
    EXPECT_TRUE(words.empty() ? outcome.empty() : Has(outcome, words.substr(1))) << row << ": " << outcome;
  }
}

// The requests of list, "[3 0+2, ]". After "w" the list is written; a and b after a slash are value3 and
// value4.
std::string Requests(std::string list) {
  const bool writes = list.front() == 'w';
  if (writes) list.erase(0, 2);
  CModbusServer server;
  DriverConfig config = At(server, list.substr(0, list.find(" /")));
  std::sscanf(list.c_str() + std::min(list.find('/'), list.size()), "/%d/%d", &config.value3, &config.value4);
  CNode reader(config);
  CValues values = reader.Read();
  if (writes) {
    for (float before = 0; float& value : values) value = before = Has(list, "c") ? 1 : before + 1;
    server.TakeLog();
    EXPECT_TRUE(CNode(config, true).Write(values)) << list;
  }
  const std::string log = server.TakeLog();
  EXPECT_EQ(reader.Read(), values) << list;
  return "[" + log + "]";
}

TEST(Modbus, JoinsWhatItMayAndSplitsNoValue) {
  ExpectOutcomes(
      R"(h2, i1, h0, i0, h1 -> [3 0+3, 4 0+2, ];i0, i10 -> [4 0+1, 4 10+1, ];h6: u32, h16 -> [3 6+11, ]
h10 x 126 -> [3 10+125, 3 135+1, ];c3 x 2001 -> [1 3+2000, 1 2003+1, ];h0 x 32 : f64 -> [3 0+124, 3 124+4, ]
c0 x 161 /10 -> [1 0+160, 1 160+1, ];h0: f64, h1, h0 x 3, h1: u32 -> [3 0+4, ]
h0, h1, h1 /0/1 -> [3 0+1, 3 1+1, 3 1+1, ];h0 x 2: f32 /0/3 -> [3 0+2, 3 2+2, ];h0, h1 /0/2 -> [3 0+2, ]
w h0, h2 -> [6 0+1, 6 2+1, ];w h1, h0 -> [6 1+1, 6 0+1, ];w h0, c1, h1 -> [6 0+1, 5 1+1, 6 1+1, ]
w h0 x 125 -> [16 0+123, 16 123+2, ];w c0 x 1969 -> [15 0+1968, 5 1968+1, ]
w h0 x 5 /2 -> [16 0+2, 16 2+2, 6 4+1, ];w h0, h1, c0, c1 /0/1 -> [6 0+1, 6 1+1, 5 0+1, 5 1+1, ])",
      Requests);
}

std::string Refusal(const DriverConfig& config, bool writes = false) {
  modbus::CSettings settings;
  return modbus::ReadSettings(ToRecord(config), writes, settings);
}

TEST(ModbusSettings, HaveADeviceAndAListThatAreReadOrRefused) {
  constexpr const char* kDevices = R"(plc -> plc:502; 127.0.0.1 : 1  -> 127.0.0.1:1;[::1]:65535 -> [::1]:65535
fe80::1 -> [fe80::1]:502; /dev/a:b , c:9600, 8, o, 2 -> /dev/a:b , c; -> it is empty;:502 -> ":502" has no host
plc: -> "" is not a port;plc:0 -> "0" is not a port;plc:65536 -> "65536" is not a port;plc:5x -> "5x" is not a port
two words -> is not a host;[::1 -> is not an address;[::1]5 -> is not an address;/dev/ttyS0 -> lacks a colon
ttyS0:9600,8,N,1 -> "ttyS0:9600,8,N,1" is not host:port;/dev/ttyS0:9600 -> "9600" is not baud,bits,parity,stop
/dev/ttyS0:9600,8,N,1,2 -> is not baud;/dev/ttyS0:9601,8,N,1 -> "9601" is not a rate;/dev/a:9600,7,N,1 -> "7" data bits
/dev/ttyS0:9600,8,M,1 -> "M" is not a parity;/dev/ttyS0:9600,8,N,3 -> "3" stop bits)";
  constexpr const char* kListsOfTwo =
      R"( -> text2: it is empty;h0, -> text2: entry 2, "";,h0 -> text2: entry 1, ""
x5 -> text2: entry 1, "x5": it has;40001 -> is h0;h -> text2: entry 1, "h": an address;h-1 -> an address
h99999999999 -> text2: entry 1;h1 2 -> "2" is extra text;h1 x -> a number of values;h1 x 0 -> a number of values
h1 x 999999999 -> text2: entry 1;h1 : -> there is no type "";h1: bit -> there is no type "bit"
c1: u16 -> a coil has no type;h1: f32 abdc -> there is no order "abdc";h1: f32 abcd x 3 -> "x 3" is extra text
h65536 -> 65536;h65535: f32 -> 65536;h65530 x 2: f64 -> 65537;h65535, c65535 ->; H 0 X1 :F32 CDAB , i7:i16 ->
h0 -> text2: it lists 1 value(s), and the node has 2;h0 x 3 -> text2: it lists 3 value(s))";
  ExpectOutcomes(kDevices, [](const std::string& device) {
    modbus::CEndpoint endpoint;
    const std::string fault = modbus::ReadEndpoint(device, endpoint);
    return fault.empty() ? endpoint.name : fault;
  });
  ExpectOutcomes(kListsOfTwo, [](const std::string& list) {
    return Refusal({.variableCount = 2, .text1 = "plc", .text2 = list.c_str()});
  });
}

TEST(ModbusSettings, AreRefusedOutsideTheirBounds) {
  const DriverConfig good = {.variableCount = 1, .text1 = "plc", .text2 = "h0"};
  const CString line = "/dev/ttyS0:9600,8,N,1";
  const auto expect = [](DriverConfig config, int DriverConfig::*number, int value, const std::string& words,
                         bool writes = false) {
    config.*number = value;
    const std::string refusal = Refusal(config, writes);
    EXPECT_TRUE(words.empty() ? refusal.empty() : Has(refusal, words)) << words << ": " << refusal;
  };
  const std::tuple<int DriverConfig::*, std::string, int> kBounds[] = {
      {&DriverConfig::station, "station", 255}, {&DriverConfig::timeOut, "timeOut", 60000},
      {&DriverConfig::value1, "value1", 60000}, {&DriverConfig::value2, "value2", 60000},
      {&DriverConfig::value3, "value3", 125},   {&DriverConfig::value4, "value4", 3}};
  for (const auto& [number, name, high] : kBounds)
    for (const int value : {-1, high + 1, high, 0})
      expect(good, number, value,
             value < 0 || value > high ? name + ": " + std::to_string(value) + " is not from 0" : "");
  for (const auto& [added, list] :
       {std::pair(-1, "h0"), {65535, "h0, h1"}, {2147483647, "h999999999"}, {-2147483647 - 1, "h0"}})
    expect({.text1 = "plc", .text2 = list}, &DriverConfig::registerAddress, added,
           "with registerAddress " + std::to_string(added));
  expect({.text1 = "plc", .text2 = "h0: f64"}, &DriverConfig::value3, 3, "value3: 3 registers");
  expect({.text1 = "plc", .text2 = "h0, d5"}, &DriverConfig::value3, 0, " discrete input 5 is none", true);
  for (const int unit : {0, 248})
    expect({.text1 = line, .text2 = "h0"}, &DriverConfig::station, unit, "station: " + std::to_string(unit));
}

using CSpoil = decltype(CReplyFault::spoil);
CSpoil Edit(const std::map<std::size_t, int>& bytes, int longer = 0) {
  return [=](CBytes& reply) {
    reply.resize(reply.size() + static_cast<std::size_t>(longer));
    for (const auto& [at, value] : bytes) reply.at(at) = static_cast<std::uint8_t>(value);
  };
}
CSpoil Become(const std::string& text) {
  return [=](CBytes& reply) { reply.assign(text.begin(), text.end()); };
}
void Twice(CBytes& reply) {
  const CBytes once = reply;
  reply.insert(reply.end(), once.begin(), once.end());
}
constexpr auto kCloses = CReplyFault::closes, kResets = CReplyFault::resets;

struct CBehaviour {
  const char* name;
  int timeOut;
  CReplyFault fault;
  std::string words = "";  // the begin of the message; none: the call succeeds
  const char* list = "h7 x 2";

  int Status() const {
    return words.empty()                    ? statusOk
           : words.starts_with("no")        ? statusTimeout
           : words.starts_with("bad")       ? statusInvalidFrame
           : words.starts_with("exception") ? statusReplyError
                                            : statusExtendedError;
  }
};

// Each has a unit of its own, since a unit may be left alone for a while after a fault.
void ExpectAll(const std::vector<CBehaviour>& rows, bool writes = false, const std::string& path = {}) {
  std::vector<int> units(rows.size());
  std::iota(units.begin(), units.end(), 1);
  CModbusServer server(units, path);
  std::vector<CNode> nodes;
  const auto transfer = [&](CNode& node, int unit, float first) {
    server.Put('h', 7, {std::uint16_t(writes ? 0 : first), 2}, unit);
    const CValues values = writes ? node.Write({first, 2}), CValues() : node.Read();
    EXPECT_EQ(values, writes || node.status != statusOk ? CValues() : (CValues{first, 2}));
    return node.status;
  };
  for (int unit = 1; const CBehaviour& row : rows) {
    SCOPED_TRACE(row.name);
    CNode& node = nodes.emplace_back(At(server, row.list, unit, row.timeOut), writes);
    EXPECT_TRUE(Soon([&] { return transfer(node, unit, 0) == statusOk; })) << node.Words();
    server.Spoil(row.fault);
    EXPECT_EQ(transfer(node, unit, 258), row.Status()) << node.Words();
    const std::string words =
        "Modbus " + server.Name() + " unit " + std::to_string(unit++) + ": " + row.words;
    EXPECT_EQ(row.words.empty() ? words : node.Words().substr(0, words.size()), words);
  }
  for (int unit = 1; CNode & node : nodes) {
    EXPECT_TRUE(Soon([&] { return transfer(node, unit, 513) == statusOk; })) << unit << node.Words();
    ++unit;
  }
}

TEST(ModbusFaults, OfRepliesByTcpAreToldAndGiveNoWrongValue) {
  std::vector<CBehaviour> rows = {
      {"twice", kLong, {Twice}},
      {"silent", kShort, {Become("")}, "no reply within 300 ms, holding registers 7 to 8"},
      {"too late", kShort, {.delay = 4 * kShort}, "no reply"},
      {"drips too slowly", kMiddle, {.drips = kMiddle / 6, .piece = 1}, "bad reply: it is cut short, h"},
      {"closes", kLong, {Become(""), kCloses}, "the device closed the connection, h"},
      {"resets", kLong, {Become(""), kResets}, "the device closed the connection, h"},
      {"closes within", kLong, {Edit({}, -3), kCloses}, "bad reply: it is cut short, the"},
      {"web server", kLong, {Become("HTTP/1.1 400\r\n"), kCloses}, "bad reply: it is of another protocol"},
      {"other request", kLong, {Edit({{0, 0x55}})}, "bad reply: it belongs to another"},
      {"more counted", kLong, {Edit({{5, 9}}, 2)}, "bad reply: its length"},
      {"less registers", kLong, {Edit({{5, 5}, {8, 2}}, -2)}, "bad reply: its length"},
      {"too many bytes", kLong, {Edit({{8, 255}})}, "bad reply: its length"},
      {"other unit", kLong, {Edit({{6, 0}})}, "bad reply: it is from unit 0, holding"},
      {"other function", kLong, {Edit({{7, 4}})}, "bad reply: it has the function of"},
      {"other exception", kLong, {Edit({{7, 0x84}, {5, 3}}, -4)}, "bad reply: it has the"},
      {"longer", kLong, {.spoil = Edit({{5, 4}}, 1), .exception = 2}, "bad reply: its length is wrong"},
      {"long", kLong, {.exception = 3}, "exception 3 (Illegal data value), holding registers 7 to 8; val"},
  };
  for (const int code : {0, 1, 8, 9, 10, 11, 12, 255}) {
    const bool isKnown = code >= 1 && code <= 11 && code != 9;
    rows.push_back({"exception",
                    kLong,
                    {.spoil = Edit({{8, code}}), .exception = 1},
                    "exception " + std::to_string(code) + (isKnown ? " (" : ", holding registers 7 to 8")});
  }
  ExpectAll(rows);
}

TEST(ModbusFaults, OfRepliesOfALineAreToldAndGiveNoWrongValue) {
  ExpectAll({{"drips", kLong, {.drips = 2, .piece = 1}},
             {"more after it", kLong, {Edit({}, 5)}},
             {"silent", kShort, {Become("")}, "no reply within 300 ms, holding registers 7 to 8"},
             {"too late", kShort, {.delay = 2 * kShort}, "no reply"},
             {"check sum", kLong, {Edit({{8, 0x99}})}, "bad reply: its check sum is wrong"},
             {"other unit", kMiddle, {Edit({{0, 99}})}, "bad reply: it is from another"},
             {"too many bytes", kLong, {Edit({{2, 255}})}, "bad reply: "},
             {"cut", kMiddle, {Edit({}, -3)}, "bad reply: it is cut short"},
             {"exception", kLong, {.exception = 6}, "exception 6 "}},
            false, PathOfLine());
}

TEST(ModbusFaults, OfAWriteAreRepliesThatDoNotRepeatWhatWasWritten) {
  ExpectAll({{"other address", kLong, {Edit({{9, 8}})}, "bad reply: it does not repeat"},
             {"other count", kLong, {Edit({{11, 1}})}, "bad reply: it does not repeat"},
             {"other function", kLong, {Edit({{7, 15}})}, "bad reply: it has the function"},
             {"other value", kLong, {Edit({{11, 5}})}, "bad reply: it does not", "h7, h9"},
             {"refused", kLong, {.exception = 4}, "exception 4 "}},
            true);
}

TEST(Modbus, FindsADeviceThatAppearsLaterOrAgain) {
  for (const std::string& path : {std::string(), PathOfLine()}) {
    CModbusServer server({1}, path);
    server.Stop();
    CNode node(At(server, "h1")), writer(At(server, "h1"), true);
    for (const float value : {5.0f, 6.0f}) {
      EXPECT_EQ(node.Read(), CValues{});
      const char* words = path.empty() ? " unit 1: no connection: " : " unit 1: ";
      EXPECT_TRUE(Has(node.Words(), words)) << node.Words();
      EXPECT_FALSE(writer.Write({value}));
      server.Start();
      EXPECT_TRUE(Soon([&] { return writer.Write({value}); })) << writer.Words();
      EXPECT_TRUE(Soon([&] { return node.Read() == CValues{value}; })) << node.Words();
      server.Stop();
    }
  }
}

TEST(Modbus, KeepsItsConnectionUnlessItIsToldToClose) {
  for (const int closes : {0, 2}) {
    CModbusServer server;
    DriverConfig config = At(server, "h0, h20");
    config.value1 = closes ? 0 : 5;
    config.value2 = closes ? 9 : 0;
    config.value4 = closes;
    const auto begin = steady_clock::now();
    CNode node(config);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(node.Read(), (CValues{0, 0})) << node.Words();
    EXPECT_LE(milliseconds(45), steady_clock::now() - begin) << "its pauses";
    EXPECT_EQ(server.Connections(), closes ? 5 : 1);
    EXPECT_EQ(server.TakeLog().size(), 5u * std::string("3 0+1, 3 20+1, ").size());
  }
}

TEST(Modbus, FindsADeviceByItsName) {
  CModbusServer server;
  DriverConfig config = At(server, "h0");
  config.text1 = ("localhost:" + server.Name().substr(10)).c_str();
  EXPECT_EQ(CNode(config).Read(), CValues{0});
  config.text1 = std::string(64, 'a').c_str();
  CNode missing(config);
  EXPECT_EQ(missing.Read(), CValues{});
  EXPECT_TRUE(Has(missing.Words(), "has no address")) << missing.Words();
}

TEST(Modbus, LosesNoScanWhenTheDeviceClosedBeforeTheFirstOrAfterAReply) {
  CModbusServer server;
  DriverConfig config = At(server, "h0, h20");
  config.value1 = 20;
  config.value2 = 50;
  CNode node(config);
  EXPECT_TRUE(Soon([&] { return server.Connections() == 1; }));
  server.Drop(false);
  EXPECT_EQ(node.Read(), (CValues{0, 0})) << node.Words();
  for (int i = 0; i < 99; ++i) server.Spoil({i == 7 ? Become("") : CSpoil(), kCloses});
  for (int i = 0; i < 5; ++i) EXPECT_TRUE(Soon([&] { return node.Read() == CValues{0, 0}; })) << node.Words();
}

TEST(ModbusPauses, GrowUntilTheLongest) {
  CModbusServer server;
  server.Stop();
  CNode growing(At(server, "h0"), false, 1, kForEver), constant(At(server, "h0"), false, 1, 1);
  int attempts = 0, constantAttempts = 0;
  EXPECT_TRUE(Soon([&] {
    growing.Read();
    constant.Read();
    attempts += growing.HasTried();
    return (constantAttempts += constant.HasTried()) == 60;
  }));
  EXPECT_GT(attempts, 1);
  EXPECT_LT(attempts, 20) << "0, 1, 3, 7, 15, 31, 63 ms...";
}

TEST(ModbusPauses, AreNotFollowedByAWaitForADeviceThatHangs) {
  for (const bool isAccepted : {true, false}) {
    CModbusServer server;
    server.Halt();
    std::vector<CNode> queue;
    for (int i = 0; i < 20 && !isAccepted; ++i) queue.emplace_back(At(server, "h0"));
    CNode node(At(server, "h0", 1, 200), false, 1, 1);
    node.Read();
    EXPECT_EQ(node.status, isAccepted ? statusTimeout : statusExtendedError) << node.Words();
    int calls = 0, timeOuts = 0;
    for (const auto end = steady_clock::now() + milliseconds(450); steady_clock::now() < end;) {
      EXPECT_EQ(node.Read(), CValues{});
      timeOuts += node.status == statusTimeout;
      calls += node.HasTried();
    }
    EXPECT_GT(calls, 3);
    EXPECT_EQ(timeOuts > 0, isAccepted) << "the question whether it is back has an end, too";
    server.Resume();
    EXPECT_TRUE(Soon([&] { return node.Read() == CValues{0}; })) << node.Words();
  }
}

TEST(ModbusPauses, BeginAnewOnceTheDeviceHasAnsweredBeItWithAnException) {
  CModbusServer server;
  for (const int exception : {2, 0}) {
    CNode node(At(server, "h0"), false, 1, kForEver);
    EXPECT_EQ(node.Read(), CValues{0});
    for (int i = 0; i < 16; ++i) {
      server.Spoil({Become(""), kCloses});
      EXPECT_EQ(node.Read(), CValues{});
      for (int k = 0; k < 2; ++k) server.Spoil({.exception = exception});
      const int wanted = exception ? statusReplyError : statusOk;
      ASSERT_TRUE(Soon([&] { return node.Read(), node.status == wanted; })) << node.Words();
    }
    server.Drop(false);
    server.Spoil({.delay = 50});
    EXPECT_EQ(node.Read(), CValues{0}) << "there is patience with it again: " << node.Words();
  }
}

TEST(ModbusPauses, FollowABadFrameButNotASingleOneOfALine) {
  CModbusServer server, line({1}, PathOfLine());
  CNode byTcp(At(server, "h0"), false, kForEver, kForEver), onLine(At(line, "h0"), false, kForEver, kForEver);
  for (const bool isBad : {false, true, false, true, false, true, true}) {
    if (isBad) line.Spoil({Edit({{4, 9}})});
    EXPECT_EQ(onLine.Read(), isBad ? CValues{} : CValues{0}) << onLine.Words();
    EXPECT_TRUE(!isBad || Has(onLine.Words(), "bad reply: its check sum")) << onLine.Words();
  }
  server.Spoil({Twice});
  EXPECT_EQ(byTcp.Read(), CValues{0});
  EXPECT_EQ(byTcp.Read(), CValues{});
  EXPECT_TRUE(Has(byTcp.Words(), "bad reply: it came without a request")) << byTcp.Words();
  for (CNode* node : {&byTcp, &onLine}) {
    EXPECT_EQ(node->Read(), CValues{});
    EXPECT_FALSE(node->HasTried()) << node->Words();
  }
  EXPECT_FALSE(byTcp.Write({1, 2}));
  EXPECT_TRUE(Has(byTcp.Words(), "number of values")) << byTcp.Words();
}

std::ptrdiff_t Entries(const char* folder) {
  return std::distance(std::filesystem::directory_iterator(folder), {});
}

TEST(Modbus, LeavesNothingHoweverOftenAConnectionEnds) {
  CModbusServer server;
  CNode idle(At(server, "h0")), failing(At(server, "h0"));
  EXPECT_EQ(idle.Read(), CValues{0});
  EXPECT_EQ(failing.Read(), CValues{0});
  const auto files = Entries("/proc/self/fd"), threads = Entries("/proc/self/task");
  for (int i = 0; i < 100; ++i) {
    server.Drop(true);
    ASSERT_EQ(idle.Read(), CValues{0}) << idle.Words();
    server.Spoil(i % 2 ? CReplyFault{Edit({}, -2), kResets} : CReplyFault{Edit({{6, 9}})});
    EXPECT_EQ(failing.Read(), CValues{});
    CNode(At(server, "h0"));
    ASSERT_TRUE(Soon([&] { return failing.Read() == CValues{0}; })) << failing.Words();
  }
  server.Stop();
  for (int i = 0; i < 9; ++i) EXPECT_EQ(failing.Read(), CValues{});
  server.Start();
  EXPECT_TRUE(Soon([&] { return failing.Read() == CValues{0}; }));
  EXPECT_EQ(idle.Read(), CValues{0});
  EXPECT_TRUE(Soon([&] { return Entries("/proc/self/fd") == files; })) << Entries("/proc/self/fd") - files;
  EXPECT_TRUE(Soon([&] { return Entries("/proc/self/task") == threads; }));
}

TEST(ModbusLine, IsSharedByItsUnitsAmongNodesOnTwoThreads) {
  CModbusServer line({1, 2}, PathOfLine());
  line.Put('h', 7, {1, 2, 3});
  line.Put('h', 7, {4, 5, 6}, 2);
  DriverConfig config = At(line, "h7 x 3, h70"), second = At(line, "h7 x 3, h70", 2);
  const std::string otherName = std::filesystem::canonical(line.Name()).string();
  second.text1 = (otherName + ":115200,8,E,1").c_str();
  for (const int closes : {0, 2}) {
    config.value4 = closes;
    CNode one(config), two(second);
    const int times = closes ? 10 : 30;
    const auto begin = steady_clock::now();
    std::thread other([&] {
      for (int i = 0; i < times; ++i) EXPECT_EQ(two.Read(), (CValues{4, 5, 6, 0})) << two.Words();
    });
    for (int i = 0; i < times; ++i) EXPECT_EQ(one.Read(), (CValues{1, 2, 3, 0})) << one.Words();
    other.join();
    EXPECT_LE((4 * times - 1) * std::chrono::microseconds(1750), steady_clock::now() - begin) << "silence";
  }
  const CNode user(config);
  config.text1 = (line.Name() + ":9600,8,E,1").c_str();
  std::string fault;
  config.variableCount = 4;
  EXPECT_EQ(modbus::CConnection::Open(ToRecord(config), driverModeRead, fault), nullptr);
  EXPECT_TRUE(Has(fault, "text1: another node uses " + line.Name())) << fault;
}

TEST(ModbusLine, TakesNoReplyForThatToAnotherRequest) {
  constexpr int kLate = kShort + 250;  // the driver waits for a late reply for 500 ms
  const CBytes others = {2, 3, 2, 0, 9, 0x3C, 0x42, 0, 3, 2, 0, 9, 0x45, 0x82};  // units 2 and 0
  const auto after = [](const CBytes& bytes) {
    return [=](CBytes& reply) { reply.insert(reply.begin(), bytes.begin(), bytes.end()); };
  };
  const struct {
    const char* name;
    int timeOut;
    CReplyFault fault;
    bool succeeds = false;
  } kRows[] = {{"twice", kLong, {Twice}, true},
               {"after those of others", kLong, {after(others)}, true},
               {"late", kShort, {.delay = kLate}},
               {"late, others", kShort, {.spoil = after(others), .delay = kLate, .drips = 5, .piece = 7}},
               {"after noise", kLong, {.spoil = after({1, 0x83, 2, 0, 0}), .drips = 5, .piece = 5}}};
  CModbusServer line({1}, PathOfLine());
  line.Put('h', 7, {1, 2});
  CNode next(At(line, "h8"));
  for (const auto& row : kRows) {
    int attempts = 4;  // on a busy machine the replies may come later than the driver waits for them
    do {
      std::this_thread::sleep_for(milliseconds(attempts < 4 ? 500 : 0));
      line.Spoil(row.fault);
      EXPECT_EQ(CNode(At(line, "h7", 1, row.timeOut)).Read(), row.succeeds ? CValues{1} : CValues{})
          << row.name;
    } while (next.Read() != CValues{2} && --attempts);
    EXPECT_GT(attempts, 0) << row.name << ": " << next.Words();
  }
}

TEST(ModbusLine, IsSetAndKeepsItsPauses) {
  CModbusServer line({1}, PathOfLine());
  DriverConfig config = At(line, "h0, h20");
  config.text1 = (line.Name() + ":600,8,o,2").c_str();
  config.value2 = 200;
  const auto begin = steady_clock::now();
  CNode node(config);
  EXPECT_EQ(node.Read(), (CValues{0, 0}));
  EXPECT_LE(std::chrono::microseconds(264'166), steady_clock::now() - begin) << "and 3.5 characters";
  termios set = {};
  const int file = ::open(line.Name().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  ::tcgetattr(file, &set);
  ::close(file);
  EXPECT_EQ(::cfgetospeed(&set), speed_t{B600});
  EXPECT_EQ(set.c_cflag & (CSTOPB | PARODD), tcflag_t{CSTOPB | PARODD});
}

}  // namespace
}  // namespace vastra
