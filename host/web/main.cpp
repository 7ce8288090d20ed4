// vastra-web: the loggers of a machine in a browser.
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <system_error>

#include "host/web/listen_address.h"
#include "host/web/web_server.h"
#include "host/web/web_site.h"

namespace vastra {
namespace {

enum EExit { kDone = 0, kFailed = 1, kWrongUse = 2 };

struct COptions {
  std::string listen = "127.0.0.1:8095", dir = "/run/vastra", users, certificate, key;
  std::vector<std::string> folders, proxies;
  bool isOpen = false;
  std::string passwordFile, passwordName;
};

// From any thread, in one piece.
void Tell(const std::string& line) { std::cerr << "vastra-web: " + line + "\n"; }

int Fail(EExit status, const std::string& what, const std::string& why) {
  std::cerr << "vastra-web: " << what << ": " << why << '\n';
  return status;
}

std::string ReadPem(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  if (!file || text.str().empty())
    throw std::runtime_error(path + ": " + (file ? "is empty" : std::strerror(errno)));
  return text.str();
}

// A file of secrets that others of the machine can read or change.
void WarnOfReaders(const std::string& path) {
  struct stat state = {};
  if (path.empty() || ::stat(path.c_str(), &state) != 0 || (state.st_mode & (S_IROTH | S_IWOTH)) == 0) return;
  Tell("warning: " + path + ": everybody on this machine can read or change it (chmod o= takes that away)");
}

// Adds NAME=DIR; throws std::runtime_error.
void AddFolder(CLoggerWatch::CFolders& folders, const std::string& text) {
  const std::size_t place = text.find('=');
  const std::string name = text.substr(0, place);
  if (place == std::string::npos || !IsLoggerName(name.c_str()))
    throw std::runtime_error("--folder " + text + ": is not NAME=DIR");
  std::error_code fault;
  const std::filesystem::path folder = std::filesystem::canonical(text.substr(place + 1), fault);
  if (fault) throw std::runtime_error("--folder " + text + ": " + fault.message());
  if (!folders.emplace(name, folder.string()).second)
    throw std::runtime_error("--folder " + text + ": there are two folders of this name");
}

// Without an echo from a terminal.
std::string ReadLine(const char* question) {
  const bool isTerminal = ::isatty(STDIN_FILENO);
  termios old = {};
  if (isTerminal) {
    std::cerr << question << std::flush;
    ::tcgetattr(STDIN_FILENO, &old);
    termios silent = old;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
  }
  std::string line;
  std::getline(std::cin, line);
  if (isTerminal) {
    ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &old);
    std::cerr << '\n';
  }
  return line;
}

int SetPassword(const COptions& options) {
  const std::string password = ReadLine("Password: ");
  if (::isatty(STDIN_FILENO) && ReadLine("Again: ") != password)
    return Fail(kFailed, "passwd", "the passwords are not the same");
  SetWebPassword(options.passwordFile, options.passwordName, password);
  return kDone;
}

// Connections are files.
void RaiseFileLimit() {
  rlimit limit;
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  ::setrlimit(RLIMIT_NOFILE, &limit);
}

std::string WhatIsUnsafe(const COptions& options, const CListenAddress& address) {
  if (options.certificate.empty() != options.key.empty()) return "--cert and --key belong together";
  for (const std::string& proxy : options.proxies)
    if (PlainAddress(proxy).empty()) return "--proxy " + proxy + ": is not an address in numbers";
  if (options.isOpen && !options.users.empty()) return "--open and --users contradict each other";
  if (!address.IsLoopback() && options.users.empty() && !options.isOpen)
    return "at " + address.Text() +
           " everybody in the network could look: --users FILE says who may, --open that all may";
  return "";
}

// Throws std::runtime_error.
CWebServerOptions ServerOptions(const COptions& options, const CListenAddress& address) {
  CWebServerOptions server;
  server.proxies = CWebProxies(options.proxies);
  if (!address.IsLoopback()) server.ofViewer = CWebServer::kMostOfViewer;
  for (const std::string& secret : {options.users, options.key}) WarnOfReaders(secret);
  if (!options.certificate.empty()) {
    server.certificate = ReadPem(options.certificate);
    server.key = ReadPem(options.key);
  } else if (!options.users.empty() && !address.IsLoopback() && server.proxies.IsEmpty()) {
    Tell("warning: without --cert passwords travel in the clear");
  }
  return server;
}

// The signals that end the program, or that do nothing: they are waited for.
sigset_t HoldSignals() {
  sigset_t held;
  sigemptyset(&held);
  for (const int one : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&held, one);
  ::pthread_sigmask(SIG_BLOCK, &held, nullptr);
  ::signal(SIGPIPE, SIG_IGN);
  return held;
}

int Serve(const COptions& options) {
  std::optional<CListenAddress> address = ParseListenAddress(options.listen);
  if (!address) return Fail(kWrongUse, "--listen " + options.listen, "is not ADDRESS:PORT");
  if (const std::string fault = WhatIsUnsafe(options, *address); !fault.empty())
    return Fail(kWrongUse, "command line", fault);
  CLoggerWatch::CFolders folders;
  for (const std::string& folder : options.folders) AddFolder(folders, folder);
  std::optional<CWebUsers> users;
  if (!options.users.empty()) users.emplace(options.users, Tell);
  CWebServerOptions server = ServerOptions(options, *address);
  try {
    server.socket = Listen(*address);
  } catch (const std::system_error& fault) {
    return Fail(kFailed, options.listen, fault.code().message());
  }
  RaiseFileLimit();
  const sigset_t held = HoldSignals();
  CLoggerFolders places;
  if (options.dir != places.run.Std()) places = {options.dir.c_str(), ""};
  CLoggerWatch watch(places, folders);
  CHistoryService history([&](const std::string& name) -> std::optional<CHistorySource> {
    if (!watch.Has(name)) return std::nullopt;
    CHistorySource source = {name, watch.FoldersOf(name), folders.contains(name)};
    source.isKnown = !source.folders.empty() || watch.HasAnswered(name);
    return source;
  });
  CWebSite site(watch, history, PackedPage(), users ? &*users : nullptr, Tell);
  const CWebServer web(server, site);
  std::cout << (server.certificate.empty() ? "http://" : "https://") << address->Text() << "/" << std::endl;
  constexpr timespec kPause = {60, 0};
  for (int signal = 0; signal != SIGINT && signal != SIGTERM;) {
    signal = ::sigtimedwait(&held, nullptr, &kPause);
    if (signal < 0) history.DropUnused();
  }
  return kDone;
}

int Main(int argc, char** argv) {
  COptions options;
  CLI::App line("vastra-web shows the loggers of this machine in a browser. It only looks.", "vastra-web");
  line.set_version_flag("--version", std::string("vastra-web ") + VASTRA_VERSION);
  line.option_defaults()->take_last();
  line.add_option("--listen", options.listen, "where it listens; 127.0.0.1:8095 without it")
      ->type_name("ADDRESS:PORT");
  line.add_option("--dir", options.dir, "where the loggers have their feeds; /run/vastra without it")
      ->type_name("DIR");
  line.add_option("--folder", options.folders,
                  "a folder of logs without a logger, and the name to show; repeatable")
      ->type_name("NAME=DIR")
      ->take_all();
  line.add_option("--proxy", options.proxies,
                  "the address of a trusted server in between, which says who asks; repeatable")
      ->type_name("ADDRESS")
      ->take_all();
  line.add_option("--users", options.users, "who may look, and their passwords (vastra-web passwd)")
      ->type_name("FILE");
  line.add_flag("--open", options.isOpen, "everybody who reaches the address may look");
  line.add_option("--cert", options.certificate, "the certificate for https, in PEM")->type_name("FILE");
  line.add_option("--key", options.key, "its key, in PEM")->type_name("FILE");
  line.footer("Example:\n  vastra-web --dir /run/user/1000/vastra");
  CLI::App* const passwd = line.add_subcommand(
      "passwd", "sets the password of a user, read from the terminal or from standard input");
  passwd->add_option("FILE", options.passwordFile, "the file for --users; made if it is not there")
      ->required();
  passwd->add_option("NAME", options.passwordName, "the user")->required();
  try {
    line.parse(argc, argv);
  } catch (const CLI::Success& wanted) {
    return line.exit(wanted);
  } catch (const CLI::ParseError& fault) {
    return Fail(kWrongUse, "command line", fault.what() + std::string(" (see vastra-web --help)"));
  }
  try {
    return *passwd ? SetPassword(options) : Serve(options);
  } catch (const std::exception& fault) {
    std::cerr << "vastra-web: " << fault.what() << '\n';
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
