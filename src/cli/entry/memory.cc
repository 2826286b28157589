// What happens when memory runs out. A picture that finds no room is an error like any other. Where
// even a few bytes are missing nothing can be unwound, worded or put in order any more, so the
// process says so and ends; what it was writing has not yet replaced anything.
#include <cstdio>
#include <cstdlib>
#include <new>

namespace {

constexpr std::size_t LARGE = 1 << 16;  // bytes

class OutOfMemory : public std::bad_alloc {
 public:
  const char* what() const noexcept override { return "not enough memory"; }
};

}  // namespace

void* operator new(std::size_t size) {
  void* const block = std::malloc(size == 0 ? 1 : size);
  if (block != nullptr) return block;
  if (size >= LARGE) throw OutOfMemory();
  std::fputs("zv-anpr: not enough memory\n", stderr);
  std::_Exit(1);
}

void operator delete(void* block) noexcept {
  std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}
