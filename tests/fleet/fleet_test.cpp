// What comes from the servers is from outside: names, chunks, packs and receipts. And the rule by which the
// newest version of a file is the one that is stored.
#include <gtest/gtest.h>

#include <fstream>

#include "host/fleet/archive_intake.h"
#include "host/fleet/fleet_streams.h"
#include "host/fleet/receipt_hearer.h"
#include "host/fleet/server_urls.h"
#include "host/fleet/settings_file.h"
#include "host/fleet/ship_files.h"
#include "tests/support/files.h"
#include "vastra/logfiles/log_format.h"

namespace vastra {
namespace {

const CFleetNode kNode = {"plant 1", "kiln.3"};

std::string LogSubject(const std::string& key, const std::string& content, std::uint64_t chunk) {
  return SubjectOf(EFileSubject::log, {{kNode, key}, VersionOf(content), chunk});
}

TEST(FleetNames, ASubjectIsReadBackAsItWasMade) {
  for (const std::string key : {"logs/a b.rph", "logs/\xe9*>.\x80=/x=41.rph", "l/=pack"}) {
    const std::string subject = LogSubject(key, "x", 7);
    EXPECT_EQ(TokensOf(subject).size(), 7U) << subject;
    EXPECT_EQ(subject.find_first_of(" *>\t"), std::string::npos) << subject;
    const std::optional<CFileSubject> read = ParseFileSubject(EFileSubject::log, subject);
    ASSERT_TRUE(read) << subject;
    EXPECT_EQ(read->file.key, key);
    EXPECT_EQ(read->file.node, kNode);
    EXPECT_EQ(read->chunk, 7U);
  }
}

TEST(FleetNames, WhatCannotBeInAnArchiveIsRefused) {
  const std::string good = LogSubject("logs/x", "x", 0);
  ASSERT_TRUE(ParseFileSubject(EFileSubject::log, good));
  const std::string version = HexOf(VersionOf("x"));
  const auto with = [&](const std::string& site, const std::string& node, const std::string& key) {
    return "vastra.log." + site + "." + node + "." + key + "." + version + ".0";
  };
  std::vector<std::string> subjects = {good + ".0",
                                       good + "x",
                                       good.substr(0, good.size() - 1),
                                       good.substr(0, good.size() - 2),
                                       "vastra.done" + good.substr(10),
                                       "vastra.log.a.b.x=2Fy." + version.substr(1) + ".0"};
  const std::string parts[][3] = {{"a", "b", "x=2f"},      {"a", "b", "x=2Fy=4"},  {"a", "b", "x=2F=41"},
                                  {"=2E", "b", "x=2Fy"},   {"=2Ex", "b", "x=2Fy"}, {"a", "=2E=2E", "x=2Fy"},
                                  {"a", "b=2Fc", "x=2Fy"}, {"a", "", "x=2Fy"}};
  for (const auto& [site, node, key] : parts) subjects.push_back(with(site, node, key));
  for (const char* key : {"../x", "x/../y", "/x", "x/", "x//y", "x/\n", "x/\x7f", "x"})
    subjects.push_back(with("a", "b", Token(key)));
  subjects.push_back(with("a", "b", Token("x/" + std::string(256, 'y'))));
  for (const std::string& subject : subjects)
    EXPECT_FALSE(ParseFileSubject(EFileSubject::log, subject)) << subject;
}

TEST(FleetNames, AnotherLogOfANameHasANumber) {
  const std::string end = std::string(251, 'y') + ".rph", cut = std::string(248, 'y') + "~12.rph";
  const std::string umlauts(120, '\xc3'), dots = "a.b/" + std::string(254, '.');
  const std::pair<std::string, std::string> paths[] = {
      {"s/n/l/x.rph", "s/n/l/x~12.rph"}, {"l/x~7.rph", "l/x~12.rph"},
      {"l/x~.rph", "l/x~~12.rph"},       {"l.d/x", "l.d/x~12"},
      {"l/.rph", "l/.rph~12"},           {"l/" + end, "l/" + cut},
      {"l/x.a~9", "l/x~12.a~9"},         {dots, dots.substr(0, 255) + "~12."}};
  for (const auto& [path, repeated] : paths) EXPECT_EQ(RepeatedPath(path, 12), repeated);
  std::string letters;
  while (letters.size() < 251) letters += "\xc3\xa4";  // a cut at 248 bytes is between two letters
  EXPECT_EQ(RepeatedPath(letters + ".rph", 123), letters.substr(0, 246) + "~123.rph");
}

TEST(FleetMessages, ADamagedChunkIsFound) {
  const std::string content(kChunkSize + 100, 'c');
  const std::string last = MakeChunk({1, content.size(), std::string_view(content).substr(kChunkSize)});
  EXPECT_EQ(ParseChunk(last, 1).bytes, std::string(100, 'c'));
  EXPECT_THROW(ParseChunk(last, 0), CChunkFault);
  for (std::size_t size = 0; size < last.size(); ++size)
    EXPECT_THROW(ParseChunk(last.substr(0, size), 1), CChunkFault) << size;
  for (std::size_t place = last.find('\n') + 1; place < last.size(); ++place) {
    std::string changed = last;
    changed[place] ^= 1;
    EXPECT_THROW(ParseChunk(changed, 1), CChunkFault) << place;
  }
  const CChunk wrong[] = {{2, content.size(), "x"},
                          {1, content.size() + 1, std::string_view(content).substr(kChunkSize)},
                          {0, 5, "xxxx"},
                          {0, kLargestFile + 1, std::string_view(content).substr(0, kChunkSize)}};
  for (const CChunk& chunk : wrong)
    EXPECT_THROW(ParseChunk(MakeChunk(chunk), chunk.number), CChunkFault) << chunk.size;
}

TEST(FleetMessages, APackHasWhatWasPutIn) {
  const std::vector<CPackedFile> files = {{"logs/a", VersionOf("one"), "one"},
                                          {"logs/\xff", VersionOf(""), "", {7, VersionOf("x")}}};
  const std::string pack = MakePack(files);
  const std::vector<CPackedFile> read = ParsePack(pack);
  ASSERT_EQ(read.size(), 2U);
  EXPECT_EQ(read[0].bytes, "one");
  EXPECT_EQ(read[1].key, "logs/\xff");
  EXPECT_EQ(read[1].log.number, 7U);
  EXPECT_EQ(read[1].log.before, VersionOf("x"));
  EXPECT_EQ(read[0].log.number, 0U);
  for (std::size_t size = 0; size < pack.size(); ++size)
    EXPECT_THROW(ParsePack(pack.substr(0, size)), CChunkFault) << size;
  EXPECT_THROW(ParsePack(MakePack({{"logs/a", VersionOf("two"), "one"}})), CChunkFault);
  EXPECT_THROW(ParsePack(MakePack({{"../a", VersionOf("one"), "one"}})), CChunkFault);
}

TEST(FleetMessages, AReceiptHoldsForItsSubjectAlone) {
  const CStoredFile stored = {{kNode, "logs/a"}, VersionOf("one"), {1, 5}, 3};
  const std::string subject = SubjectOf(EFileSubject::done, {stored.file, stored.version});
  const std::string other = SubjectOf(EFileSubject::done, {stored.file, VersionOf("two")});
  ASSERT_EQ(ParseReceipts(subject, MakeReceipt({stored}, "id")).size(), 1U);
  EXPECT_EQ(ParseReceipts(subject, MakeReceipt({stored}, "id")).front().sequence, 5U);
  EXPECT_TRUE(ParseReceipts(other, MakeReceipt({stored}, "id")).empty());
  CStoredFile a = stored, b = {{kNode, "logs/\xff"}, VersionOf("two"), {1, 7}, 3};
  a.pack = b.pack = VersionOf("pack");
  const std::vector<CReceipt> both = ParseReceipts(ReceiptSubject(a), MakeReceipt({a, b}, "id"));
  ASSERT_EQ(both.size(), 2U);
  EXPECT_EQ(both[1].subject.file.key, b.file.key);
  EXPECT_EQ(both[1].subject.version, b.version);
  EXPECT_EQ(both[1].sequence, 7U);
  EXPECT_TRUE(ParseReceipts(subject, MakeReceipt({a, b}, "id")).empty());
  // The server answers to any subject that a client names.
  for (const char* data : {R"({"stream":"VASTRA_LOGS", "seq":5})", "", "[]", "{\"receipt\": 1}"})
    EXPECT_TRUE(ParseReceipts(subject, data).empty()) << data;
}

TEST(FleetMessages, TheTimeOfAServer) {
  EXPECT_EQ(ServerTime("2026-11-27T18:01:53.427355284Z"), 1795802513427355284U);
  EXPECT_EQ(ServerTime("2026-11-27T18:01:53Z"), 1795802513000000000U);
  EXPECT_FALSE(ServerTime("yesterday"));
}

TEST(FleetServers, AnUrlIsAProtocolAHostAndAPort) {
  const std::pair<const char*, const char*> lists[] = {
      {"nats1", "nats://nats1:4222 "},
      {" tls://a:1,, nats://10.0.0.1:65535/ ", "tls://a:1 nats://10.0.0.1:65535 "},
      {"nats://user:p@ss:w@[::1]:42,tls://[fe80::1%eth0]",
       "nats://user:p@ss:w@[::1]:42 tls://[fe80::1%eth0]:4222 "}};
  for (const auto& [list, wanted] : lists) {
    std::string urls;
    for (const CServerUrl& server : ParseServers({list})) urls += server.Url() + " ";
    EXPECT_EQ(urls, wanted) << list;
  }
  EXPECT_TRUE(ParseServers({"tls://u:p@a"}).front().isTls);
  for (const char* const list :
       {"", " , ", "ws://a", "nats//secret@a:1", "nats:/a:1", "a:", "a:0", "a:65536", "a:4x", "a:-1",
        "nats://", "nats://secret@", "::1:4222", "[::1", "[::1]4222", "a b", "a,http://b"})
    try {
      ParseServers({list});
      ADD_FAILURE() << list;
    } catch (const CUrlFault& fault) {
      EXPECT_EQ(std::string(fault.what()).find("secret"), std::string::npos) << list;
    }
}

TEST(FleetSettings, AreReadOrRefusedWithTheLine) {
  const std::pair<const char*, const char*> texts[] = {
      {"[ship]\nnode = \"kiln #1, old\"  # the first\ncsv = true\n", "ship.csv=true;ship.node=kiln #1, old;"},
      {"[a]\nx = [\"/b\" , # one\n 'c=/d',\n]\ny = -5\n[b]\nx = []", "a.x=/b|c=/d;a.y=-5;b.x=;"},
      {"", ""},
      {"x = 1\n[a]", "line 1: x is before the first part, such as [ship]"},
      {"[a]\nx = 1.5\n", "line 2: x is not a text, a whole number, true or false"},
      {"[a]\nx = 1\n[a.b]\nc = 2", "line 3: b is not a text, a whole number, true or false"},
      {"[a]\n\nnode = kiln1", "line 3: "},
      {"[a]\nx = 1\nx = 2", "line 3: "}};
  for (const auto& [text, wanted] : texts) {
    std::istringstream input(text);
    std::string read;
    try {
      for (const CSetting& one : ParseSettings(input)) {
        read += one.part + "." + one.key + "=";
        for (std::size_t i = 0; i < one.values.size(); ++i) read += (i > 0 ? "|" : "") + one.values[i];
        read += ";";
      }
    } catch (const CSettingsFault& fault) {
      read = fault.what();
    }
    EXPECT_TRUE(std::string(wanted).ends_with(": ") ? read.starts_with(wanted) : read == wanted) << read;
  }
}

class ArchiveIntake : public testing::Test {
 protected:
  void Open() {
    m_intake.reset();
    m_record.reset();
    m_tree.emplace(m_folder.string());
    m_record.emplace((m_folder / "record").string());
    m_intake.emplace(*m_tree, *m_record, [](const std::string&) {});
  }
  // A file of one letter as often as size says, or one chunk of it. before: the letter of the version before.
  void Take(char letter, std::size_t size, std::uint64_t chunk, COrder order, std::uint64_t log = 0,
            char before = 0, const std::string& key = "logs/a") {
    const std::string content(size, letter);
    const std::string_view bytes = std::string_view(content).substr(chunk * kChunkSize, kChunkSize);
    const CVersion last = before == 0 ? CVersion{} : VersionOf(std::string(size, before));
    m_intake->Take({{kNode, key}, VersionOf(content), chunk}, MakeChunk({chunk, size, bytes, {log, last}}),
                   order);
  }
  // The first letters of all files, in the order of their names.
  std::string All() {
    std::set<std::filesystem::path> paths;
    for (const auto& one : std::filesystem::directory_iterator(m_folder / "plant 1/kiln.3/logs"))
      paths.insert(one.path());
    std::string letters;
    for (const auto& path : paths) letters += static_cast<char>(std::ifstream(path).get());
    return letters;
  }

  const CTempDir m_dir;
  const std::filesystem::path m_folder = m_dir.Path().Std();
  std::optional<CArchiveTree> m_tree;
  std::optional<CArchiveRecord> m_record;
  std::optional<CArchiveIntake> m_intake;
};

TEST_F(ArchiveIntake, TheVersionThatWasSentLastIsStored) {
  const std::tuple<char, COrder, const char*, std::size_t> steps[] = {
      {'A', {1, 1}, "A", 1}, {'B', {1, 2}, "B", 1}, {'A', {1, 1}, "B", 0}, {'B', {1, 2}, "B", 1},
      {'A', {1, 3}, "A", 1}, {'B', {1, 2}, "A", 0}, {'C', {2, 1}, "C", 1}, {'A', {1, 9}, "C", 0}};
  Open();
  for (const auto& [letter, order, stored, receipts] : steps) {
    Take(letter, 10, 0, order);
    EXPECT_EQ(m_intake->Finish().size(), receipts) << letter << order.sequence;
    EXPECT_EQ(All(), stored) << letter << order.sequence;
    Open();  // all of it is in the record
  }
  std::filesystem::remove(m_folder / "plant 1/kiln.3/logs/a");
  Take('C', 10, 0, {2, 1});
  m_intake->Finish();
  EXPECT_EQ(All(), "C");
  Take('D', 10, 0, {3, 1});
  Take('E', 10, 0, {3, 2});  // in one batch
  EXPECT_EQ(m_intake->Finish().size(), 2U);
  EXPECT_EQ(All(), "E");
}

TEST_F(ArchiveIntake, ALogReplacesItsOwnVersionsAlone) {
  constexpr std::size_t kSize = kChunkSize + 1;
  struct {
    char letter;
    std::uint64_t log, sequence;
    const char* all;  // of a, a~2, ...
    char before = 0;
    bool isRecordLost = false;
    const char* key = "logs/a";
  } const steps[] = {{'A', 0, 1, "A"},  // of a shipper that has no numbers
                     {'B', 0, 2, "B"},
                     {'C', 1, 3, "BC"},
                     {'C', 1, 3, "BC"},
                     {'B', 1, 4, "BB"},
                     {'D', 1, 5, "BD"},
                     {'C', 1, 3, "BD"},
                     {'E', 2, 6, "BDE", 'B'},
                     {'E', 3, 7, "BDE"},             // the shipper has lost its state
                     {'E', 2, 8, "BDE", 'D', true},  // and the archive its record
                     {'F', 2, 9, "BDF", 'E', true},  // without which D could be another log
                     {'G', 4, 9, "BDFG", 'X', true},
                     {'H', 5, 9, "BDFGH", 0, false, "logs/a~2"},
                     {'I', 5, 10, "BDFGI", 0, false, "logs/a~2"},
                     {'J', 4, 11, "BDFJI"}};
  Open();
  for (const auto& step : steps) {
    if (step.isRecordLost) m_record.reset(), std::filesystem::remove(m_folder / "record"), Open();
    for (const std::uint64_t chunk : {1, 0}) {
      Take(step.letter, kSize, chunk, {1, step.sequence}, step.log, step.before, step.key);
      m_intake->Finish();
      Open();
    }
    EXPECT_EQ(All(), step.all) << step.letter << step.sequence;
  }
  Take('K', 10, 0, {1, 12}, 6, 0, "logs/a~6");  // in one batch
  Take('L', 10, 0, {1, 13}, 7);
  Take('M', 10, 0, {1, 14}, 8, 0, "logs/a~7");
  EXPECT_EQ(m_intake->Finish().size(), 3U);
  EXPECT_EQ(All(), "BDFJIKLM");
}

TEST_F(ArchiveIntake, ALogDoesNotEndTheReceptionOfAnother) {
  constexpr std::size_t kSize = kChunkSize + 1;
  Open();
  Take('A', kSize, 0, {1, 1}, 1);
  Take('C', kSize, 0, {1, 2}, 2);
  m_intake->Finish();
  Open();
  Take('B', 10, 0, {1, 3}, 2);
  m_intake->Finish();
  EXPECT_EQ(m_tree->Incoming().size(), 1U);  // C is older than B
  Open();
  Take('A', kSize, 1, {1, 2}, 1);
  m_intake->Finish();
  EXPECT_EQ(All(), "BA");
}

TEST_F(ArchiveIntake, AStreamIsAnotherOneWhenItWasMadeAnewOrSetBack) {
  Open();
  EXPECT_EQ(m_record->NumberOfStream("monday", 0), 1U);
  Take('A', 10, 0, {1, 7});
  m_intake->Finish();
  EXPECT_EQ(m_record->NumberOfStream("monday", 7), 1U);
  EXPECT_EQ(m_record->NumberOfStream("sunday", 9), 2U);  // the servers' clock is behind
  EXPECT_EQ(m_record->NumberOfStream("monday", 9), 3U);
  Take('B', 10, 0, {3, 8});
  m_intake->Finish();
  EXPECT_EQ(m_record->NumberOfStream("monday", 5), 4U);
}

TEST_F(ArchiveIntake, ChunksComeInAnyOrderAndOutliveTheProcess) {
  constexpr std::size_t kSize = 2 * kChunkSize + 1;
  Open();
  Take('A', kSize, 2, {1, 3});
  Take('A', kSize, 0, {1, 1});
  m_intake->Finish();
  Take('A', kSize, 1, {1, 2});  // not finished
  Open();
  ASSERT_EQ(m_record->Partials().size(), 1U);
  EXPECT_EQ(m_record->Partials().front().Missing(9), std::vector<std::uint64_t>{1});
  Take('B', 10, 0, {1, 2});  // sent before the last chunk of A
  EXPECT_EQ(m_intake->Finish().size(), 1U);
  Take('A', kSize, 1, {1, 2});
  EXPECT_EQ(m_intake->Finish().size(), 1U);
  EXPECT_EQ(All(), "A");
  EXPECT_TRUE(m_tree->Incoming().empty());
  for (std::uint64_t chunk = 0; chunk < 3; ++chunk) Take('A', kSize, chunk, {2, 9 - chunk});
  const std::vector<CStoredFile> again = m_intake->Finish();
  ASSERT_EQ(again.size(), 1U);
  EXPECT_EQ(again.front().order.sequence, 9U);
}

std::string Binary(std::int32_t firstTime, const char* rest) {
  CLogStart start;
  start.m_firstTime = firstTime;
  return std::string(reinterpret_cast<const char*>(&start), sizeof start) + rest;
}

// The minutes in which a line that is told each minute is printed, with a pause of ten minutes before the
// last one.
TEST(FleetLines, ALineThatGoesOnBecomesRare) {
  std::vector<std::string> lines;
  CToldOnce log([&](const std::string& line) { lines.push_back(line); });
  std::vector<int> minutes;
  for (int minute = 0; minute < 200; ++minute) {
    if (minute > 180 && minute < 190) continue;
    log.Tell("away", CToldOnce::Time{} + std::chrono::minutes(minute));
    minutes.resize(lines.size(), minute);
  }
  EXPECT_EQ(minutes, (std::vector<int>{0, 1, 3, 7, 15, 31, 63, 123, 190, 191, 193, 197}));
  EXPECT_EQ(lines[5], "away (15 more times)");
}

// What makes another log of a file, and what only changes it.
TEST(FleetFiles, ALogThatWasRemovedIsNotTheNextOneOfItsName) {
  const CTempDir dir;
  const std::filesystem::path folder = dir.Path().Std(), part = folder / "logs/part";
  std::filesystem::create_directories(folder / "logs");
  CShipState state((folder / "state").string());
  CToldOnce log([](const std::string&) {});
  CLogFinder finder({{"logs", folder / "logs"}}, true, [](const std::string&) {});
  CShipFiles files(finder, state, -1, {}, log);
  CShipFiles::Time now = std::chrono::steady_clock::now();
  const auto work = [&](int phases) {
    while (phases-- > 0) files.Work(now += std::chrono::minutes(1));
  };
  work(1);
  struct {
    int roundsAway;
    std::string content;
    bool isAnother;
    std::string name = "a.csv";
  } const steps[] = {{0, "a\n", true},
                     {0, "b\n", false},
                     {1, "c\n", false},  // removed and written by a program that replaces it
                     {1, "c \n", false},
                     {2, "d\n", true},
                     {2, "d\n", true},
                     {0, "TimeStamp,A,\n10:00,1,\n", false},
                     {0, "TimeStamp,A,\n10:00,1,\n10:01,1,\n", false},
                     {0, "TimeStamp,A,\n10:02,1,\n", true},
                     {1, "TimeStamp,A,\n10:03,1,\n", true},
                     {0, Binary(5, "x"), true, "a.rph"},
                     {0, Binary(5, "xy"), false, "a.rph"},
                     {0, Binary(6, "x"), true, "a.rph"}};
  std::map<std::string, std::uint64_t> numbers;
  for (const auto& step : steps) {
    const std::filesystem::path path = folder / "logs" / step.name;
    if (step.roundsAway > 0) std::filesystem::remove(path);
    work(2 * step.roundsAway);
    std::ofstream(part) << step.content;
    std::filesystem::rename(part, path);
    work(4);
    const std::optional<CShipFile> file = state.Find("logs/" + step.name);
    ASSERT_TRUE(file) << &step - steps;
    EXPECT_EQ(std::exchange(numbers[step.name], file->log.number) != file->log.number, step.isAnother)
        << &step - steps;
  }
  EXPECT_EQ(files.Lost(), 5U);  // none was sent
}

// What a receipt does to a file whose content is A; the archive may have had A before, and B since.
TEST(FleetReceipts, AReceiptOfAnEarlierSendingDoesNotCount) {
  const CTempDir dir;
  CNatsOptions nowhere;
  nowhere.servers = {"nats://127.0.0.1:1"};
  nowhere.inbox = "_INBOX.test";
  CNatsLink link(nowhere);
  CShipState state((dir / "state").Std());
  CToldOnce log([](const std::string&) {});
  CReceiptHearer hearer(link, state, kNode, log);
  struct {
    EShipped before;
    std::uint64_t sequence, others;
    char version;
    std::uint64_t receipt;
    EShipped after;
    bool hasReceipt;
  } const cases[] = {
      {EShipped::sent, 5, 0, 'A', 5, EShipped::archived, true},
      {EShipped::sent, 5, 4, 'A', 3, EShipped::sent, false},
      {EShipped::sent, 0, 4, 'A', 3, EShipped::sent, false},  // its own number is not known
      {EShipped::sent, 0, 4, 'A', 6, EShipped::archived, true},
      {EShipped::sending, 0, 0, 'A', 6, EShipped::archived, true},
      {EShipped::waiting, 5, 0, 'A', 6, EShipped::waiting, true},  // its content has changed since
      {EShipped::archived, 5, 0, 'B', 6, EShipped::waiting, false},
      {EShipped::archived, 5, 0, 'B', 4, EShipped::archived, true},
      {EShipped::sent, 5, 0, 'B', 6, EShipped::sent, false}};
  for (const auto& one : cases) {
    CShipFile file;
    file.key = "logs/a";
    file.state = one.before;
    file.version = VersionOf("A");
    file.sequence = one.sequence;
    file.others = one.others;
    file.hasReceipt = one.before == EShipped::archived;
    state.Put(file);
    hearer.Hear({{{kNode, file.key}, VersionOf(std::string(1, one.version))}, one.receipt, "one"});
    EXPECT_EQ(state.Find(file.key)->state, one.after) << &one - cases;
    EXPECT_EQ(state.Find(file.key)->hasReceipt, one.hasReceipt) << &one - cases;
  }
  hearer.Hear({{{{"other", "node"}, "logs/a"}, VersionOf("A")}, 99, "one"});
  EXPECT_EQ(state.Find("logs/a")->others, 6U);
  // An archive that has lost everything: all is sent again.
  CShipFile other = *state.Find("logs/a");
  other.key = "logs/b";
  other.state = EShipped::archived;
  other.hasReceipt = true;
  state.Put(other);
  hearer.Hear({{{kNode, "logs/a"}, VersionOf("A")}, 100, "two"});
  EXPECT_EQ(state.Find("logs/b")->state, EShipped::waiting);
  EXPECT_FALSE(state.Find("logs/b")->hasReceipt);
  // The servers keep the receipts of the archive before: they are of earlier messages.
  hearer.Hear({{{kNode, "logs/a"}, VersionOf("A")}, 7, "one"});
  EXPECT_FALSE(state.SetArchive("two"));
  EXPECT_EQ(state.Sum(EShipped::archived).files, state.Find("logs/a")->state == EShipped::archived ? 1U : 0U);
}

}  // namespace
}  // namespace vastra
