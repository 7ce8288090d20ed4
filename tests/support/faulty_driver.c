/* A driver that keeps the contract, with one named fault: the variable FAULT at run time, or MODULE_FAULT of
 * the build, which a test may overwrite in the file. Its values are 1, 2, 3... while text1 is the one that
 * the handle was opened with. It never returns from the call that HANGS names, from the n-th on, n being
 * HANGS_AFTER. */
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>
#include <unwind.h>

#include "vastra/plc/driver_api.h"

#ifndef MODULE_ID
#define MODULE_ID 9500
#define MODULE_NAME "Faulty"
#define MODULE_FAULT "none"
#endif
#define MOST_NODES 1024 /* a handle is used again after as many calls of Open */

static struct Node {
  const char* given; /* text1, while the handle is open */
  pthread_t opener;
  char copy[64];
} nodes[MOST_NODES];
static pthread_t loader;
static DriverRecord settings;

volatile char module_fault[40] = MODULE_FAULT;

static const char* Fault(void) { return getenv("FAULT") ? getenv("FAULT") : (const char*)module_fault; }
static int Has(const char* fault) { return strcmp(Fault(), fault) == 0; }
static void Linger(void) { usleep(Has("is slow") ? 500000 : 0); }

static void HangForAll(void) {
  sigset_t all;
  sigfillset(&all);
  sigprocmask(SIG_BLOCK, &all, NULL);
  for (;;) pause();
}

static void Hang(const char* call) {
  static int calls;
  const char* after = getenv("HANGS_AFTER");
  while (getenv("HANGS") && strcmp(getenv("HANGS"), call) == 0 && ++calls > (after ? atoi(after) : 0))
    pause();
}

static void WriteEverywhere(const char* bytes, size_t size) {
  int file;
  for (file = 0; file < 64; ++file)
    if (write(file, bytes, size) < 0) continue;
}

static int Overflow(const volatile char* above) {
  volatile char here[4096];
  here[0] = above ? *above : 0;
  return above == here ? 0 : Overflow(here) + here[1];
}

/* The fault "WHAT, PLACE" of this place. */
static void Go(const char* place) {
  static struct _Unwind_Exception exception;
  const char* comma = strchr(Fault(), ',');
  int i;
  if (!comma || strcmp(comma + 2, place) != 0) return;
#define DOES(what) (strncmp(Fault(), what ",", sizeof what) == 0)
  if (DOES("crash")) raise(SIGSEGV);
  if (DOES("write to 1")) *(volatile int*)1 = 1;
  if (DOES("overflow")) Overflow(NULL);
  if (DOES("abort")) abort();
  if (DOES("exit")) exit(0);
  if (DOES("_exit")) _exit(7);
  if (DOES("kill")) kill(0, SIGKILL);
  if (DOES("stop")) raise(SIGSTOP);
  if (DOES("hang")) HangForAll();
  while (DOES("spin")) continue;
  if (DOES("throw")) _Unwind_RaiseException(&exception);
  if (DOES("close")) closefrom(0);
  if (DOES("print")) WriteEverywhere("a line\n", 7);
  if (DOES("lie")) WriteEverywhere("+1 Lie\0", 7), _exit(0);
  for (i = 0; i < 20 && DOES("fork"); ++i)
    if (fork() == 0) HangForAll();
}

__attribute__((constructor)) static void Load(void) { Go("load"); }
__attribute__((destructor)) static void Unload(void) { Go("unload"); }

/* Bytes up to a page that cannot be read. */
static const char* OpenText(void) {
  char* const pages = mmap(NULL, 8192, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  mprotect(pages + 4096, 4096, PROT_NONE);
  return memset(pages, 'x', 4096);
}

static void* Wander(void* unused) {
  for (;;) usleep(1000);
  return unused;
}

static int Open(DriverRecord config, int mode, int* handle) {
  static int opened = 0;
  pthread_t thread;
  struct Node* node;
  Linger();
  Hang("open");
  Go("Open");
  if (mode == driverModeOther) return Has("refuses a mode") ? statusNotOpened : statusInvalidMode;
  if (getenv("FAULT") && (config.plcType != MODULE_ID || config.variableCount != 2)) return statusNoMemory;
  if (config.openState != 0) return statusNoMemory;
  if (Has("gives a status of Read")) return statusTimeout;
  if (config.text1[0] == '\1') return statusExtendedError;
  if (Has("leaves a file") && open("/dev/null", O_RDONLY) < 0) abort();
  if (Has("leaves a thread") && pthread_create(&thread, NULL, Wander, NULL) == 0) pthread_detach(thread);
  if (Has("stores no handle")) return statusOk;
  *handle = Has("has one handle") ? 0 : __sync_fetch_and_add(&opened, 1) % MOST_NODES;
  node = &nodes[*handle];
  strncpy(node->copy, config.text1, sizeof node->copy - 1);
  node->given = config.text1;
  node->opener = pthread_self();
  return statusOk;
}

/* Whether a text that was kept has changed. It is dead memory, which the address sanitizer would report. */
__attribute__((no_sanitize("address"))) static int HasChanged(const volatile char* kept, const char* text) {
  while (*kept == *text && *text) ++kept, ++text;
  return *kept != *text;
}

static int Read(float* values, int count, int handle) {
  const int end =
      count + Has("writes behind") - Has("leaves a value") + (Has("writes far behind") ? 1 << 20 : 0);
  static int reads;
  int i;
  Linger();
  Hang("read");
  Go("call");
  if (handle < 0 || handle >= MOST_NODES || !nodes[handle].given) return statusNotOpened;
  if (Has("knows handles of the thread") && !pthread_equal(nodes[handle].opener, pthread_self()))
    return statusNotOpened;
  if (Has("crashes")) raise(SIGSEGV);
  if (Has("exits")) _exit(7);
  while (Has("hangs")) pause();
  if (Has("keeps a text") && HasChanged(nodes[handle].given, nodes[handle].copy)) return statusTimeout;
  if (Has("serves one thread") && !pthread_equal(loader, pthread_self())) return statusTimeout;
  if (Has("gives 0")) return 0;
  if (strncmp(Fault(), "words ", 6) == 0) return statusExtendedError;
  for (i = 0; i < end; ++i) values[i] = (float)(Has("counts") ? ++reads : i + 1);
  if (Has("writes before")) values[-1] = 0;
  return statusOk;
}

static int Write(float* values, int count, int handle) {
  const volatile float* given = values;
  Hang("write");
  Go("call");
  if (Has("reads behind") && given[count] == 1) return statusTimeout;
  return (void)handle, Has("writes with 1") ? 1 : statusOk;
}

static void Close(int handle) {
  Linger();
  Hang("close");
  Go("call");
  if (!Has("has one handle") && handle >= 0) nodes[handle].given = NULL;
}

static const char* GetExtendedError(int handle) {
  static char endless[10000];
  Go("call");
  if (Has("crashes without a handle") && handle < 0) raise(SIGSEGV);
  if (Has("words null")) return NULL;
  if (Has("words empty")) return "";
  if (Has("words with percent signs")) return "%s%n%s 100%";
  if (Has("words in Latin-1")) return "Ger\xE4t";
  if (Has("words without end")) return memset(endless, 'x', sizeof endless - 1);
  return "It does not work.";
}

static int ShowConfig(int isNew) { return (void)isNew, Go("call"), Has("shows a form"); }
static DriverRecord GetConfig(void) {
  Go("call");
  if (!Has("forgets its ID")) settings.plcType = MODULE_ID;
  return settings;
}
static void SetConfig(DriverRecord config) {
  Go("call"), settings = config, settings.text1 = settings.text2 = NULL;
}

DriverHeader GetDriverHeader(void) {
  static int calls = 0;
  static DriverFunctions table = {ShowConfig, GetConfig,        SetConfig,       Open, Read, Write, Close,
                                  {0, 0},     GetExtendedError, GetExtendedError};
  DriverHeader header = {MODULE_ID, MODULE_NAME, &table};
  static char huge[1 << 20];
  loader = pthread_self();
  Go("header");
  if (Has("has a new ID each time")) header.id += calls++;
  if (Has("has no table")) header.functions = NULL;
  if (Has("has no transfer")) table.Read = NULL, table.Write = NULL;
  if (Has("has no Close")) table.Close = NULL;
  if (Has("has garbage for Close")) table.Close = (void (*)(int))(size_t)0x5A5A5A5A;
  if (Has("words missing")) table.GetExtendedError = NULL;
  if (Has("is named in Latin-1")) header.name = "Ger\xE4t";
  if (Has("has no name")) header.name = NULL;
  if (Has("has a wild name")) header.name = (const char*)8;
  if (Has("has an open name")) header.name = OpenText() + 4080;
  if (Has("has a huge name")) header.name = memset(huge, 'x', sizeof huge - 1);
  if (Has("has a wild table")) header.functions = (const DriverFunctions*)8;
  if (Has("crashes at once")) raise(SIGSEGV);
  return header;
}

const char* CheckDriverConfig(DriverRecord config) {
  static char longest[2003]; /* the limit of 2,000 bytes is within its last character */
  Go("call");
  if (Has("refuses what it opens")) return "text1 is wrong.";
  if (Has("answers in Latin-1")) return config.text1[0] == '\1' ? "Ger\xE4t" : NULL;
  if (!config.text1[0]) return "";
  return strcat(memset(longest, 'x', 1999), "\xE2\x82\xAC");
}

const char* GetDriverLine(DriverRecord config) { return Go("call"), config.text2; }
void SetDriverHost(const DriverHost* host) { (void)host, Go("call"); }

#ifndef NO_VERSION
int GetDriverApiVersion(void) { return Go("version"), DRIVER_API_VERSION + Has("is of the future"); }
#endif
