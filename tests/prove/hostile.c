/* A driver module with a fault. The test writes the fault, and the call in which it happens, into the
 * compiled file. */
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>
#include <unwind.h>

#include "vastra/plc/driver_api.h"

#define PAGE 4096

volatile char what[24] = "WHAT                   ";
volatile char where[24] = "WHERE                  ";

static int Has(const char* fault) { return strcmp((const char*)what, fault) == 0; }

static int Overflow(const volatile char* above) {
  volatile char here[PAGE];
  here[0] = above ? *above : 0;
  return Overflow(here) + here[1];
}

static void WriteEverywhere(const char* bytes, size_t size) {
  int file;
  for (file = 0; file < 64; ++file)
    if (write(file, bytes, size) < 0) continue;
}

static void HangForAll(void) {
  sigset_t all;
  sigfillset(&all);
  sigprocmask(SIG_BLOCK, &all, NULL);
  for (;;) pause();
}

static void Go(const char* place) {
  static struct _Unwind_Exception exception;
  int i;
  if (strcmp((const char*)where, place) != 0) return;
  if (Has("crash")) raise(SIGSEGV);
  if (Has("write to 1")) *(volatile int*)1 = 1;
  if (Has("overflow")) Overflow(NULL);
  if (Has("abort")) abort();
  if (Has("exit")) exit(0);
  if (Has("_exit")) _exit(7);
  if (Has("kill")) kill(0, SIGKILL);
  if (Has("stop")) raise(SIGSTOP);
  if (Has("hang")) HangForAll();
  while (Has("spin")) continue;
  if (Has("throw")) _Unwind_RaiseException(&exception);
  if (Has("close")) closefrom(0);
  if (Has("print")) WriteEverywhere("a line\n", 7);
  if (Has("lie")) WriteEverywhere("+1 Lie\0", 7), _exit(0);
  for (i = 0; i < 20 && Has("fork"); ++i)
    if (fork() == 0) HangForAll();
}

__attribute__((constructor)) static void Load(void) { Go("load"); }
__attribute__((destructor)) static void Unload(void) { Go("unload"); }

/* Readable bytes, without a 0, up to a page that cannot be read. */
static const char* Unterminated(void) {
  char* pages = mmap(NULL, 2 * PAGE, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  memset(pages, 'x', PAGE);
  mprotect(pages + PAGE, PAGE, PROT_NONE);
  return pages + PAGE - 16;
}

static const char* Name(void) {
  static char huge[1 << 20];
  if (Has("null name")) return NULL;
  if (Has("wild name")) return (const char*)8;
  if (Has("open name")) return Unterminated();
  if (Has("huge name")) return memset(huge, 'x', sizeof huge - 1);
  return Has("Latin-1 name") ? "Ger\xE4t" : "Hostile";
}

static int Open(DriverRecord config, int mode, int* handle) {
  return (void)config, (void)mode, (void)handle, Go("Open"), statusOk;
}

DriverHeader GetDriverHeader(void) {
  static const DriverFunctions table = {NULL, NULL, NULL, Open};
  static int calls = 0;
  DriverHeader header = {9600, NULL, &table};
  Go("header");
  header.name = Name();
  if (Has("wild table")) header.functions = (const DriverFunctions*)8;
  if (Has("new id")) header.id += calls++;
  return header;
}

int GetDriverApiVersion(void) { return Go("version"), 2; }
