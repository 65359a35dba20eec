include(CMakePackageConfigHelpers)

install(TARGETS zelkora EXPORT zelkora-targets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES include/zelkora.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

# Relative to the file itself, so that the installed tree may be moved.
set(zelkora_pc_dir ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH zelkora_prefix_from_pc ${zelkora_pc_dir} ${CMAKE_INSTALL_PREFIX})
file(RELATIVE_PATH zelkora_include_from_pc ${zelkora_pc_dir} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
configure_file(cmake/zelkora.pc.in zelkora.pc @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/zelkora.pc"
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

set(zelkora_config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zelkora)
install(EXPORT zelkora-targets NAMESPACE Zelkora:: DESTINATION ${zelkora_config_dir})
configure_package_config_file(cmake/zelkora-config.cmake.in zelkora-config.cmake
  INSTALL_DESTINATION ${zelkora_config_dir})
write_basic_package_version_file(zelkora-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/zelkora-config.cmake"
  "${CMAKE_CURRENT_BINARY_DIR}/zelkora-config-version.cmake"
  DESTINATION ${zelkora_config_dir})
