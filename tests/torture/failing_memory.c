/* Preloaded into the program: its allocation number FAIL_AT fails, and FAIL_COUNT - 1 more after it
 * (0: all). With FAIL_REPORT the number of all allocations is left in that file. Other programs that
 * inherit the variables are left alone. */
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

extern void *__libc_malloc(size_t size);
extern void *__libc_calloc(size_t count, size_t size);
extern void *__libc_realloc(void *block, size_t size);
extern void *__libc_memalign(size_t alignment, size_t size);

enum { UNKNOWN, OURS, FOREIGN };

static atomic_long made;
static atomic_int whose = UNKNOWN;
static long first, last;

static long setting(const char *name) {
  const char *text = getenv(name);
  return text ? atol(text) : 0;
}

static void look_around(void) {
  first = setting("FAIL_AT");
  const long count = setting("FAIL_COUNT");
  last = count ? first + count - 1 : 1L << 40;
  whose = strcmp(program_invocation_short_name, "zv-anpr") == 0 ? OURS : FOREIGN;
}

static int fails(void) {
  if (whose == UNKNOWN) look_around();
  if (whose != OURS) return 0;
  const long number = atomic_fetch_add(&made, 1) + 1;
  if (first == 0 || number < first || number > last) return 0;
  errno = ENOMEM;
  return 1;
}

void *malloc(size_t size) { return fails() ? NULL : __libc_malloc(size); }
void *calloc(size_t count, size_t size) { return fails() ? NULL : __libc_calloc(count, size); }
void *realloc(void *block, size_t size) { return fails() ? NULL : __libc_realloc(block, size); }
void *memalign(size_t alignment, size_t size) {
  return fails() ? NULL : __libc_memalign(alignment, size);
}
void *aligned_alloc(size_t alignment, size_t size) { return memalign(alignment, size); }
int posix_memalign(void **block, size_t alignment, size_t size) {
  *block = memalign(alignment, size);
  return *block ? 0 : ENOMEM;
}

__attribute__((destructor)) static void report(void) {
  const char *name = getenv("FAIL_REPORT");
  if (!name || whose != OURS) return;
  const int file = open(name, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  dprintf(file, "%ld\n", (long)made);
  close(file);
}
