# Language level and warnings for every target of this tree.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()
find_program(ZV_CCACHE ccache)
if(ZV_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${ZV_CCACHE}")
endif()

# Warnings are errors for those who develop this, not for those who install it: their compiler may
# know warnings that ours does not.
if(NOT DEFINED CMAKE_COMPILE_WARNING_AS_ERROR)
  if(SKBUILD)
    set(CMAKE_COMPILE_WARNING_AS_ERROR OFF)
  else()
    set(CMAKE_COMPILE_WARNING_AS_ERROR ON)
  endif()
endif()

add_library(zv_options INTERFACE)
target_include_directories(zv_options INTERFACE "${CMAKE_SOURCE_DIR}/src")
if(MSVC)
  target_compile_options(zv_options INTERFACE /W4 /utf-8)
else()
  target_compile_options(zv_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Wold-style-cast
    # g++ 12 sees overlaps in std::string concatenation that cannot happen (GCC bug 105651), and
    # g++ 13 unset members of std::variant that nobody reads.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict -Wno-maybe-uninitialized>)
endif()
if(ZV_SANITIZE)
  target_compile_options(zv_options INTERFACE -fsanitize=${ZV_SANITIZE} -fno-omit-frame-pointer
    -fno-sanitize-recover=undefined)
  target_link_options(zv_options INTERFACE -fsanitize=${ZV_SANITIZE})
  if(ZV_SANITIZE STREQUAL "thread")
    # g++ says that the sanitizer does not see the fences in Asio's headers; Asio hands its
    # operations over under a mutex, which the sanitizer does see.
    target_compile_options(zv_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-tsan>)
  endif()
endif()
