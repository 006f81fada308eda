# Installs the library, its headers, cvsoa, a CMake package and a pkg-config file.
set(cvsoa_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/CorvaneSoa)

install(TARGETS corvane_soa EXPORT CorvaneSoaTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/corvane DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.hpp")
install(FILES ${PROJECT_BINARY_DIR}/include/corvane/soa/Export.hpp
              ${PROJECT_BINARY_DIR}/include/corvane/soa/BuildInfo.hpp
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/corvane/soa)
if(TARGET cvsoa)
  install(TARGETS cvsoa RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

install(EXPORT CorvaneSoaTargets NAMESPACE Corvane:: DESTINATION ${cvsoa_cmake_dir})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/CorvaneSoaConfig.cmake.in
  ${PROJECT_BINARY_DIR}/CorvaneSoaConfig.cmake INSTALL_DESTINATION ${cvsoa_cmake_dir}
  PATH_VARS CMAKE_INSTALL_DATADIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/CorvaneSoaConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/CorvaneSoaConfig.cmake ${PROJECT_BINARY_DIR}/CorvaneSoaConfigVersion.cmake
  DESTINATION ${cvsoa_cmake_dir})

# The pkg-config file finds its prefix relative to itself, so the tree can be moved.
file(RELATIVE_PATH CVSOA_PC_TO_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(${PROJECT_SOURCE_DIR}/cmake/corvane-soa.pc.in ${PROJECT_BINARY_DIR}/corvane-soa.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/corvane-soa.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The generated types' headers and the generator that makes them, for users' own schemas.
install(DIRECTORY ${CVSOA_GENERATED_DIR}/corvane DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.hpp")
install(TARGETS cvsoa-gen EXPORT CorvaneSoaTargets RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${PROJECT_SOURCE_DIR}/cmake/SchemaCode.cmake DESTINATION ${cvsoa_cmake_dir})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/schemas/ DESTINATION ${CMAKE_INSTALL_DATADIR}/corvane-soa/schemas)
