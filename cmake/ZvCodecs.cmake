# The foreign libraries of image/, and on Windows of base/: shared ones, or with ZV_STATIC their
# archives, so that the executable runs where only the C library is installed.
option(ZV_STATIC "Link the image codecs and the C++ runtime statically where archives exist" OFF)
set(ZV_PKG_MODULES libtiff-4 freetype2 libpng libjpeg)
add_library(zv_uv INTERFACE)  # child processes, where the system has no fork
add_library(zv_codecs INTERFACE)

# Sets OUT to the archives behind what pkg-config lists, or to nothing when one is not there.
function(zv_find_archives out)
  pkg_check_modules(ZV_FOREIGN QUIET ${ZV_PKG_MODULES})
  set(archives "")
  foreach(name IN LISTS ZV_FOREIGN_STATIC_LIBRARIES)
    if(name MATCHES "^(c|m|dl|rt|pthread)$")
      list(APPEND archives "${name}")
      continue()
    endif()
    find_library(ZV_ARCHIVE_${name} NAMES lib${name}.a lib${name}_a.a
                 HINTS ${ZV_FOREIGN_STATIC_LIBRARY_DIRS})
    mark_as_advanced(ZV_ARCHIVE_${name})
    if(NOT ZV_ARCHIVE_${name})
      message(STATUS "No archive of ${name}: linking the shared libraries")
      return()
    endif()
    list(APPEND archives "${ZV_ARCHIVE_${name}}")
  endforeach()
  set(${out} "${archives}" PARENT_SCOPE)
endfunction()

find_package(PkgConfig QUIET)
if(WIN32)
  find_package(libuv CONFIG REQUIRED)
  target_link_libraries(zv_uv INTERFACE
    $<IF:$<TARGET_EXISTS:libuv::uv_a>,libuv::uv_a,libuv::uv>)
endif()

if(ZV_STATIC AND CMAKE_SYSTEM_NAME STREQUAL "Linux" AND PKG_CONFIG_FOUND)
  zv_find_archives(ZV_ARCHIVES)
endif()
if(ZV_ARCHIVES)
  # The order that pkg-config gives is one of several modules merged; the group settles it.
  target_link_libraries(zv_codecs INTERFACE -Wl,--start-group ${ZV_ARCHIVES} -Wl,--end-group)
  target_include_directories(zv_codecs SYSTEM INTERFACE ${FREETYPE_INCLUDE_DIRS})
  target_link_options(zv_codecs INTERFACE -static-libstdc++ -static-libgcc)
else()
  target_link_libraries(zv_codecs INTERFACE JPEG::JPEG PNG::PNG TIFF::TIFF Freetype::Freetype)
endif()
