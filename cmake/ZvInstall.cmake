# Where a wheel or a plain `cmake --install` puts things, and what is generated to be put there.
if(SKBUILD)
  set(ZV_BIN_DIR "${SKBUILD_SCRIPTS_DIR}")
  set(ZV_SHARE_DIR "${SKBUILD_DATA_DIR}/share")
else()
  include(GNUInstallDirs)
  set(ZV_BIN_DIR "${CMAKE_INSTALL_BINDIR}")
  set(ZV_SHARE_DIR "${CMAKE_INSTALL_DATADIR}")
endif()

add_executable(zv-anpr-docs tools/docs.cc)
target_link_libraries(zv-anpr-docs PRIVATE zv_cli)
target_compile_definitions(zv-anpr-docs PRIVATE ZV_VERSION="${PROJECT_VERSION}")
set(ZV_GENERATED "${CMAKE_BINARY_DIR}/generated")
file(MAKE_DIRECTORY "${ZV_GENERATED}")
set(ZV_GENERATED_FILES zv-anpr.bash _zv-anpr zv-anpr.fish zv-anpr.1)
list(TRANSFORM ZV_GENERATED_FILES PREPEND "${ZV_GENERATED}/")
add_custom_command(OUTPUT ${ZV_GENERATED_FILES} COMMAND zv-anpr-docs "${ZV_GENERATED}"
                   DEPENDS zv-anpr-docs VERBATIM)
add_custom_target(zv-anpr-generated ALL DEPENDS ${ZV_GENERATED_FILES})

install(TARGETS zv-anpr DESTINATION "${ZV_BIN_DIR}")
install(FILES "${ZV_GENERATED}/zv-anpr.bash" RENAME zv-anpr
        DESTINATION "${ZV_SHARE_DIR}/bash-completion/completions")
install(FILES "${ZV_GENERATED}/_zv-anpr" DESTINATION "${ZV_SHARE_DIR}/zsh/site-functions")
install(FILES "${ZV_GENERATED}/zv-anpr.fish"
        DESTINATION "${ZV_SHARE_DIR}/fish/vendor_completions.d")
install(FILES "${ZV_GENERATED}/zv-anpr.1" DESTINATION "${ZV_SHARE_DIR}/man/man1")
