// vastra-fleet: the logs of many machines in one archive.
#include <signal.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <thread>

#include "host/common/paths.h"
#include "host/fleet/archiver.h"
#include "host/fleet/distant_feeds.h"
#include "host/fleet/fleet_status.h"
#include "host/fleet/fleet_streams.h"
#include "host/fleet/live_table.h"
#include "host/fleet/server_urls.h"
#include "host/fleet/settings_file.h"
#include "host/fleet/shipper.h"

namespace vastra {
namespace {

enum EExit { kDone = 0, kFailed = 1, kWrongUse = 2 };

class CUseFault : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct COptions {
  CNatsOptions servers;
  CStreamWishes streams;
  std::vector<std::string> nodes, leaves;
  CShipperOptions ship;
  std::vector<std::string> folders;
  CArchiverOptions archive;
  CLiveChoice watched;
  std::string watchFeeds;
  std::string deleteAfter;
  bool isJson = false, isPrint = false, hasChunks = false;
};

constexpr std::chrono::seconds kPatience{10};  // with servers, of commands that end

void Print(const std::string& line) { std::cerr << "vastra-fleet: " << line << std::endl; }

// The signals that end the process, heard by a thread of their own.
class CEnd {
 public:
  explicit CEnd(CNatsLink& link) : m_thread([this, &link] { Wait(link); }) {}
  CEnd(const CEnd&) = delete;
  CEnd& operator=(const CEnd&) = delete;
  ~CEnd() {
    ::pthread_kill(m_thread.native_handle(), SIGUSR1);
    m_thread.join();
  }
  // Before any other thread is there.
  static void Block() {
    ::signal(SIGPIPE, SIG_IGN);
    const sigset_t ends = Signals();
    ::pthread_sigmask(SIG_BLOCK, &ends, nullptr);
  }
  const std::atomic<bool>& Flag() const { return m_end; }

 private:
  static sigset_t Signals() {
    sigset_t ends;
    sigemptyset(&ends);
    for (const int one : {SIGINT, SIGTERM, SIGUSR1}) sigaddset(&ends, one);
    return ends;
  }
  void Wait(CNatsLink& link) {
    const sigset_t ends = Signals();
    int signal = 0;
    ::sigwait(&ends, &signal);
    m_end = true;
    link.Wake();
  }

  std::atomic<bool> m_end{false};
  std::thread m_thread;
};

std::string StateFolder(const std::string& given, const std::string& name) {
  if (!given.empty()) return given;
  if (const char* const service = std::getenv("STATE_DIRECTORY")) return service;
  if (const char* const state = std::getenv("XDG_STATE_HOME"))
    return std::string(state) + "/vastra-fleet/" + name;
  const char* const home = std::getenv("HOME");
  if (home == nullptr) throw CUseFault("--state DIR is needed: HOME is not set");
  return std::string(home) + "/.local/state/vastra-fleet/" + name;
}

const std::string& CheckedName(const char* option, const std::string& name) {
  if (!IsFleetName(name))
    throw CUseFault(std::string(option) + " is the name of a folder: \"" + name + "\" is none");
  return name;
}

CFleetNode ParseNode(const std::string& text) {
  const std::size_t slash = text.find('/');
  CFleetNode node = {text.substr(0, slash), slash == std::string::npos ? "" : text.substr(slash + 1)};
  if (!IsFleetName(node.site) || !IsFleetName(node.name)) throw CUseFault(text + ": is not SITE/NODE");
  return node;
}

// FOLDER, named after its last part, or NAME=FOLDER.
CShipFolder ParseFolder(const std::string& text) {
  const std::size_t equals = text.find('=');
  const bool isNamed = equals != std::string::npos && text.substr(0, equals).find('/') == std::string::npos;
  std::string path = MakeAbsolute((isNamed ? text.substr(equals + 1) : text).c_str()).Std();
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  CShipFolder folder = {isNamed ? text.substr(0, equals) : path.substr(path.rfind('/') + 1), path};
  if (!IsFleetName(folder.name)) throw CUseFault(text + ": the folder needs a name, as in NAME=FOLDER");
  if (!std::filesystem::is_directory(path)) throw std::runtime_error(path + ": is not a folder");
  return folder;
}

std::vector<CShipFolder> ParseFolders(const std::vector<std::string>& texts) {
  std::vector<CShipFolder> folders;
  for (const std::string& text : texts) {
    folders.push_back(ParseFolder(text));
    for (std::size_t i = 0; i + 1 < folders.size(); ++i)
      if (folders[i].name == folders.back().name)
        throw CUseFault(text + ": there are two folders of the name " + folders.back().name +
                        "; another one is NAME=FOLDER");
  }
  return folders;
}

// "90s", "12h", "30d"; days without a unit.
std::int64_t ParseAge(const std::string& text) {
  constexpr std::pair<char, std::int64_t> kUnits[] = {{'s', 1}, {'m', 60}, {'h', 3600}, {'d', 86400}};
  std::int64_t number = -1;
  const char* const last = text.data() + text.size();
  const auto [end, fault] = std::from_chars(text.data(), last, number);
  const char unit = end == last ? 'd' : end + 1 == last ? *end : '?';
  for (const auto& [letter, seconds] : kUnits)
    if (fault == std::errc() && letter == unit && number >= 0 && number < 1000000) return number * seconds;
  throw CUseFault("--delete-after " + text + ": is not an age such as 12h or 30d");
}

// The library accepts negative numbers, and makes large ones of them.
void SetSize(CLI::Option* option) {
  constexpr std::size_t kDigits = 18;
  option->transform(CLI::AsSizeValue(true))->check([](const std::string& size) {
    return size.size() > kDigits || size[0] == '-' ? "is not a size such as 50kB" : std::string();
  });
}

bool IsDomain(const std::string& name) {
  return !name.empty() && name.find_first_of(". *>\t") == std::string::npos;
}

int Init(COptions& options) {
  if (options.servers.servers.empty() && !options.isPrint) throw CUseFault("init needs --server URL");
  std::vector<CFleetNode> nodes;
  for (const std::string& site : options.leaves) nodes.push_back({CheckedName("--leaf", site), ""});
  for (const std::string& text : options.nodes) nodes.push_back(ParseNode(text));
  if (!options.isPrint) {
    options.servers.name = "vastra-fleet init";
    options.servers.inbox = "_INBOX.vastra-init";
    CNatsLink link(options.servers);
    link.WaitUp(kPatience);
    MakeStreams(link, options.streams, std::cout);
  }
  PrintServerSettings(nodes, options.servers.domain, std::cout);
  return kDone;
}

int Ship(COptions& options) {
  CShipperOptions& ship = options.ship;
  CheckedName("--site", ship.node.site);
  CheckedName("--node", ship.node.name);
  ship.folders = ParseFolders(options.folders);
  if (!options.deleteAfter.empty()) ship.deleteAfter = ParseAge(options.deleteAfter);
  ship.state = StateFolder(ship.state, "ship-" + Token(ship.node.site) + "-" + Token(ship.node.name));
  options.servers.name = "vastra-fleet ship " + ship.node.site + "/" + ship.node.name;
  options.servers.inbox = InboxOf(ship.node);
  options.servers.payload = kMostInMessage;
  CToldOnce log(Print);
  CEnd::Block();
  CNatsLink link(options.servers);
  CShipper shipper(link, ship, log);
  const CEnd end(link);
  return shipper.Run(end.Flag()) || !ship.isOnce ? kDone : kFailed;
}

int Archive(COptions& options) {
  CArchiverOptions& archive = options.archive;
  archive.into = MakeAbsolute(archive.into.c_str()).Std();
  if (archive.state.empty() && std::getenv("STATE_DIRECTORY") == nullptr)
    archive.state = archive.into + "/.state";
  archive.state = StateFolder(archive.state, "");
  options.servers.name = "vastra-fleet archive";
  options.servers.inbox = "_INBOX.vastra-archive";
  options.servers.payload = kMostInMessage;
  CToldOnce log(Print);
  CEnd::Block();
  CNatsLink link(options.servers);
  CArchiver archiver(link, archive, log);
  const CEnd end(link);
  archiver.Run(end.Flag());
  return kDone;
}

int Status(COptions& options) {
  options.servers.name = "vastra-fleet status";
  options.servers.inbox = "_INBOX.vastra-watch";
  CNatsLink link(options.servers);
  link.WaitUp(kPatience);
  const CJson status = FleetStatus(link, options.hasChunks);
  std::cout << (options.isJson ? JsonLine(status) : FleetTable(status, options.hasChunks));
  return kDone;
}

std::unique_ptr<CFleetView> MakeView(const COptions& options, CToldOnce& log) {
  if (!options.watchFeeds.empty())
    return std::make_unique<CDistantFeeds>(MakeAbsolute(options.watchFeeds.c_str()).Std(), log);
  if (options.isJson) return std::make_unique<CJsonView>(std::cout, log);
  return std::make_unique<CLiveTable>(std::cout, ::isatty(STDOUT_FILENO) != 0, log);
}

int Watch(COptions& options) {
  options.servers.name = "vastra-fleet watch";
  options.servers.inbox = "_INBOX.vastra-watch";
  CToldOnce log(Print);
  CEnd::Block();
  CNatsLink link(options.servers);
  const std::unique_ptr<CFleetView> view = MakeView(options, log);
  const CEnd end(link);
  WatchFleet(link, options.watched, *view, std::cout, end.Flag());
  return kDone;
}

CLI::Option* AddServers(CLI::App* command, COptions& options) {
  CLI::Option* const server =
      command
          ->add_option("--server", options.servers.servers, "the servers; several with commas, or repeated")
          ->type_name("URL")
          ->required()
          ->take_all()
          ->check([](const std::string& text) -> std::string {
            try {
              ParseServers({text});
              return "";
            } catch (const CUrlFault& fault) {
              return fault.what();
            }
          });
  command
      ->add_option("--creds", options.servers.creds,
                   "a file with credentials, or with the line USER:PASSWORD")
      ->type_name("FILE");
  command->add_option("--tls-ca", options.servers.authority, "who signs the servers' certificates, in PEM")
      ->type_name("FILE");
  CLI::Option* const certificate =
      command->add_option("--tls-cert", options.servers.certificate, "the certificate of this client, in PEM")
          ->type_name("FILE");
  CLI::Option* const key =
      command->add_option("--tls-key", options.servers.key, "its key, in PEM")->type_name("FILE");
  certificate->needs(key);
  key->needs(certificate);
  command
      ->add_option("--domain", options.servers.domain,
                   "of JetStream, where the streams are; that of the server without it")
      ->type_name("NAME")
      ->check([](const std::string& name) {
        return IsDomain(name) ? "" : name + ": is not the name of a domain";
      });
  return server;
}

// The file of --config has a part for each command, with the names of its options.
class CConfigFile : public CLI::Config {
 public:
  explicit CConfigFile(const CLI::App& line) : m_line(line) {}

  std::string to_config(const CLI::App*, bool, bool, std::string) const override { return ""; }
  std::vector<CLI::ConfigItem> from_config(std::istream& input) const override {
    std::vector<CLI::ConfigItem> values;
    for (const CSetting& one : ParseSettings(input)) {
      Check(one);
      values.push_back({{one.part}, one.key, one.values});
    }
    return values;
  }

 private:
  void Check(const CSetting& one) const {
    const std::string part = "[" + one.part + "]";
    const auto isPart = [&](const CLI::App* command) { return command->get_name() == one.part; };
    const auto commands = m_line.get_subcommands(isPart);
    if (commands.empty())
      throw CSettingsFault(one.line, one.key + " is in " + part + ", which is not a command");
    const CLI::Option* const option = commands.front()->get_option_no_throw("--" + one.key);
    if (option == nullptr)
      throw CSettingsFault(one.line, one.key + " is not an option of vastra-fleet " + one.part);
    if (one.values.empty() || (one.values.size() > 1 && option->get_items_expected_max() == 1))
      throw CSettingsFault(one.line, one.key + " is one value, not a list");
  }

  const CLI::App& m_line;
};

using CRun = int (*)(COptions&);
struct CCommand {
  CLI::App* app;
  CRun run;
  COptions* options;
};

CCommand AddInit(CLI::App& line, COptions& options) {
  CLI::App* const init =
      line.add_subcommand("init", "makes the streams, and prints what else the servers need");
  CLI::Option* const server = AddServers(init, options)->required(false);
  CLI::Option* const print = init->add_flag("--print", options.isPrint,
                                            "only prints the settings of the servers, without asking them");
  print->excludes(server);
  init->add_option("--replicas", options.streams.replicas,
                   "servers that have each message; at least 3 without it")
      ->check(CLI::Range(1, 5));
  SetSize(init->add_option("--max-bytes", options.streams.maxBytes,
                           "of chunks that wait, at most; such as 50GB"));
  init->add_option("--node", options.nodes, "prints the user of this node; repeatable")
      ->type_name("SITE/NODE");
  init->add_option("--leaf", options.leaves,
                   "prints the user by which the server of this site is a leaf; repeatable")
      ->type_name("SITE");
  return {init, Init, &options};
}

CCommand AddShip(CLI::App& line, COptions& options) {
  CLI::App* const ship = line.add_subcommand("ship", "sends the logs of this machine");
  AddServers(ship, options);
  ship->add_option("--site", options.ship.node.site, "the plant")->required();
  ship->add_option("--node", options.ship.node.name, "this machine")->required();
  ship->add_option("--folder,FOLDER", options.folders, "folders of logs, FOLDER or NAME=FOLDER")
      ->required()
      ->take_all();
  ship->add_option("--state", options.ship.state, "where it remembers what was sent")->type_name("DIR");
  SetSize(ship->add_option("--limit", options.ship.limit, "bytes per second, at most; such as 50kB"));
  ship->add_flag("--csv", options.ship.isCsv, "logs as text, too");
  ship->add_option("--delete-after", options.deleteAfter,
                   "removes files of this age that the archive has; such as 30d")
      ->type_name("AGE");
  ship->add_option("--feeds", options.ship.feeds,
                   "the folder with the feeds of the loggers; /run/vastra without it")
      ->type_name("DIR");
  ship->add_flag("--once", options.ship.isOnce, "ends when the servers have all files");
  return {ship, Ship, &options};
}

CCommand AddArchive(CLI::App& line, COptions& options) {
  CLI::App* const archive = line.add_subcommand("archive", "stores the logs of all machines");
  AddServers(archive, options);
  archive->add_option("--into", options.archive.into, "the folder of the archive")
      ->required()
      ->type_name("DIR");
  archive
      ->add_option("--state", options.archive.state, "where it remembers what it has; DIR/.state without it")
      ->type_name("DIR");
  archive->add_option("--site", options.archive.site, "takes the files of this site alone");
  return {archive, Archive, &options};
}

CCommand AddStatus(CLI::App& line, COptions& options) {
  CLI::App* const status = line.add_subcommand("status", "what each machine has sent, and what waits");
  AddServers(status, options);
  status->add_flag("--json", options.isJson, "as JSON");
  status->add_flag("--chunks", options.hasChunks,
                   "also the chunks of each machine that the servers hold, as they count them");
  return {status, Status, &options};
}

CCommand AddWatch(CLI::App& line, COptions& options) {
  CLI::App* const watch = line.add_subcommand("watch", "what the loggers of all machines do now");
  AddServers(watch, options);
  watch->add_option("--site", options.watched.site, "loggers of this site alone");
  watch->add_option("--node", options.watched.node, "loggers of machines of this name alone");
  CLI::Option* const json = watch->add_flag("--json", options.isJson, "each message as a line of JSON");
  watch
      ->add_option("--feeds", options.watchFeeds,
                   "makes a feed for each logger in this folder, for vastra-web --dir")
      ->type_name("DIR")
      ->excludes(json);
  return {watch, Watch, &options};
}

int Main(int argc, char** argv) {
  COptions init, ship, archive, status, watch;  // a file can have values for several
  std::string file;
  CLI::App line("vastra-fleet brings the logs of many machines into one archive.", "vastra-fleet");
  line.set_version_flag("--version", std::string("vastra-fleet ") + VASTRA_VERSION);
  line.config_formatter(std::make_shared<CConfigFile>(line));
  line.set_config("--config", "", "options of the commands, from a file")
      ->type_name("FILE")
      ->check([&file](const std::string& path) {
        file = path;
        std::error_code none;
        if (std::filesystem::is_directory(path, none)) return path + ": is a folder";
        return ::access(path.c_str(), R_OK) == 0 ? "" : path + ": " + std::strerror(errno);
      });
  line.fallthrough();  // --config after the command
  line.option_defaults()->take_last();
  line.require_subcommand(0, 1);
  const CCommand commands[] = {AddInit(line, init), AddShip(line, ship), AddArchive(line, archive),
                               AddStatus(line, status), AddWatch(line, watch)};
  try {
    line.parse(argc, argv);
  } catch (const CLI::Success& wanted) {
    return line.exit(wanted);
  } catch (const CLI::ParseError& fault) {
    Print("command line" + (file.empty() ? "" : " and " + file) + ": " + fault.what() +
          " (see vastra-fleet --help)");
    return kWrongUse;
  } catch (const CSettingsFault& fault) {
    Print(file + ", " + fault.what());
    return kWrongUse;
  }
  try {
    for (const CCommand& one : commands)
      if (*one.app) return one.run(*one.options);
    throw CUseFault("a command is missing: init, ship, archive, status or watch (see vastra-fleet --help)");
  } catch (const CUseFault& fault) {
    Print(fault.what());
    return kWrongUse;
  } catch (const std::exception& fault) {
    Print(fault.what());
    return kFailed;
  }
}

}  // namespace
}  // namespace vastra

int main(int argc, char** argv) {
  try {
    return vastra::Main(argc, argv);
  } catch (...) {
    return vastra::kFailed;  // without memory not even a message can be made
  }
}
