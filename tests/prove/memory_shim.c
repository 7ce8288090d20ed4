// Preloaded by the claim "memory": the allocation with the number SHIM_NTH of the process fails,
// and with SHIM_FROM all later ones. At the end of a process in which none has failed, the file SHIM_COUNT
// gets the number of allocations.
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

extern void* __libc_malloc(size_t);
extern void* __libc_calloc(size_t, size_t);
extern void* __libc_realloc(void*, size_t);
extern void* __libc_memalign(size_t, size_t);

static atomic_long s_count;
static long s_nth = -1;
static int s_from;

__attribute__((constructor)) static void Start(void) {
  const char* nth = getenv("SHIM_NTH");
  s_from = getenv("SHIM_FROM") != NULL;
  unsetenv("LD_PRELOAD");  // a process that this one starts has its memory
  atomic_store(&s_count, 0);
  s_nth = nth ? atol(nth) : 0;
}

__attribute__((destructor)) static void End(void) {
  const char* path = getenv("SHIM_COUNT");
  const long count = atomic_load(&s_count);
  const int file =
      path && (s_nth == 0 || count < s_nth) ? open(path, O_WRONLY | O_CREAT | O_TRUNC, 0600) : -1;
  if (file < 0) return;
  dprintf(file, "%ld", count);
  close(file);
}

static int Fails(void) {
  if (s_nth < 0) return 0;  // before the constructor
  const long count = atomic_fetch_add(&s_count, 1) + 1;
  if (s_nth == 0 || !(s_from ? count >= s_nth : count == s_nth)) return 0;
  errno = ENOMEM;
  return 1;
}

void* malloc(size_t size) { return Fails() ? NULL : __libc_malloc(size); }
void* calloc(size_t count, size_t size) { return Fails() ? NULL : __libc_calloc(count, size); }
void* realloc(void* old, size_t size) { return Fails() ? NULL : __libc_realloc(old, size); }
void* memalign(size_t alignment, size_t size) { return Fails() ? NULL : __libc_memalign(alignment, size); }
void* aligned_alloc(size_t alignment, size_t size) { return memalign(alignment, size); }
int posix_memalign(void** memory, size_t alignment, size_t size) {
  *memory = memalign(alignment, size);
  return *memory ? 0 : ENOMEM;
}
