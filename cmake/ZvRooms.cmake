# A room is a folder of src/ built as one static library; its files are found by their place.
function(zv_room name)
  cmake_parse_arguments(ROOM "" "" "LINKS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/src/${name}/*.cc")
  if(WIN32)
    list(FILTER sources EXCLUDE REGEX "_posix\\.cc$")
  else()
    list(FILTER sources EXCLUDE REGEX "_win32\\.cc$")
  endif()
  if(NOT sources)  # a room that holds only headers so far
    add_library(zv_${name} INTERFACE)
    target_link_libraries(zv_${name} INTERFACE zv_options ${ROOM_LINKS})
    return()
  endif()
  add_library(zv_${name} STATIC ${sources})
  set_target_properties(zv_${name} PROPERTIES LINKER_LANGUAGE CXX)
  target_link_libraries(zv_${name} PUBLIC zv_options ${ROOM_LINKS})
endfunction()

# Makes `constexpr std::string_view SYMBOL` in "<file>.inc" from the text of a file.
function(zv_embed_text target file symbol)
  set(output "${CMAKE_BINARY_DIR}/embedded/${file}.inc")
  add_custom_command(
    OUTPUT "${output}"
    COMMAND ${CMAKE_COMMAND} -DINPUT=${CMAKE_SOURCE_DIR}/${file} -DOUTPUT=${output}
            -DSYMBOL=${symbol} -P ${CMAKE_SOURCE_DIR}/cmake/EmbedText.cmake
    DEPENDS "${CMAKE_SOURCE_DIR}/${file}" "${CMAKE_SOURCE_DIR}/cmake/EmbedText.cmake"
    VERBATIM)
  target_sources(${target} PRIVATE "${output}")
  target_include_directories(${target} PRIVATE "${CMAKE_BINARY_DIR}/embedded")
endfunction()
