# What `cmake --install` lays down: library, public headers, CMake package, pkg-config file, and
# with the tool its manual page, bash completion and golden vectors.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(tarn_header_dir ${CMAKE_INSTALL_INCLUDEDIR}/tarn)
set(tarn_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tarn)

install(FILES
  include/TarnSolution.h include/TarnChecked.h
  engines/TarnQCEngine.h engines/TarnVXEngine.h engines/TarnQCNEONEngine.h
  DESTINATION ${tarn_header_dir})
install(TARGETS tarn EXPORT tarn
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${tarn_header_dir})
install(EXPORT tarn NAMESPACE tarn:: FILE tarnConfig.cmake DESTINATION ${tarn_package_dir})

write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/tarnConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
file(RELATIVE_PATH TARN_PC_TO_PREFIX
  /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" TARN_PC_TO_PREFIX "${TARN_PC_TO_PREFIX}")
configure_file(cmake/tarn.pc.in ${CMAKE_CURRENT_BINARY_DIR}/tarn.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tarnConfigVersion.cmake DESTINATION ${tarn_package_dir})
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tarn.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(TARN_TOOL)
  install(TARGETS tarn_tool RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tarn.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES tools/tarn/tarn.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME tarn)
  install(DIRECTORY golden/vectors/ DESTINATION ${CMAKE_INSTALL_DATADIR}/tarn/golden)
  install(FILES golden/README.md DESTINATION ${CMAKE_INSTALL_DATADIR}/tarn/golden)
endif()
