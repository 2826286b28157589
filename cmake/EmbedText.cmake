# Script: wraps INPUT's text into a C++ raw string named SYMBOL.
file(READ "${INPUT}" text)
get_filename_component(folder "${OUTPUT}" DIRECTORY)
file(MAKE_DIRECTORY "${folder}")
file(WRITE "${OUTPUT}" "constexpr std::string_view ${SYMBOL} = R\"embedded(${text})embedded\";\n")
