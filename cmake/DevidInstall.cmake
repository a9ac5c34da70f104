# Installation: libraries, public headers, the CMake package and devid.pc, the
# documentation, man pages and shell completion. The devid tool and the example
# board install themselves from cli/.
include(CMakePackageConfigHelpers)

# Headers keep their paths from the repository root below this folder, so
# clients write the same #include lines as the library's own sources.
set(DEVID_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/devid)
set(DEVID_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/devid)

# The libraries the device identifier opens at run time by short name; they
# sit beside libdevid.so, where its run path finds them.
set(DEVID_RUNTIME_SIBLINGS mora_targetdb_parser SetupAdapter4 ProbeTargetAdapter TraceFactory)

# Installed libraries find one another in their own folder without any
# environment setting, as in the build tree.
set_target_properties(devid hexkit ${DEVID_RUNTIME_SIBLINGS} PROPERTIES INSTALL_RPATH "\$ORIGIN")

install(TARGETS devid hexkit EXPORT devidTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        INCLUDES DESTINATION ${DEVID_INSTALL_INCLUDEDIR})
install(TARGETS ${DEVID_RUNTIME_SIBLINGS} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})

install(FILES devid/CDeviceIdentifier.h DESTINATION ${DEVID_INSTALL_INCLUDEDIR}/devid)
install(FILES devid/target/HexkitError.h DESTINATION ${DEVID_INSTALL_INCLUDEDIR}/devid/target)
install(FILES tdf/TDFHandler.h DESTINATION ${DEVID_INSTALL_INCLUDEDIR}/tdf)
install(DIRECTORY common/source/source_utilities/
        DESTINATION ${DEVID_INSTALL_INCLUDEDIR}/common/source/source_utilities
        FILES_MATCHING PATTERN "*.h")

install(EXPORT devidTargets NAMESPACE devid:: DESTINATION ${DEVID_INSTALL_CMAKEDIR})
configure_package_config_file(cmake/devidConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/devidConfig.cmake
  INSTALL_DESTINATION ${DEVID_INSTALL_CMAKEDIR})
# Same major version only; the pointer-width check keeps a 64-bit client from
# picking up the 32-bit package and the other way round.
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/devidConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/devidConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/devidConfigVersion.cmake
        DESTINATION ${DEVID_INSTALL_CMAKEDIR})

# devid.pc is written at install time so that it names the prefix actually
# installed to (cmake --install --prefix), not the one configured.
set(DEVID_PC_PREFIX "@DEVID_PC_PREFIX@")
configure_file(cmake/devid.pc.in ${CMAKE_CURRENT_BINARY_DIR}/devid.pc.in @ONLY)
install(CODE "
  set(DEVID_PC_PREFIX \"\${CMAKE_INSTALL_PREFIX}\")
  configure_file(\"${CMAKE_CURRENT_BINARY_DIR}/devid.pc.in\" \"${CMAKE_CURRENT_BINARY_DIR}/devid.pc\" @ONLY)
")
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/devid.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# README.md links into docs/, so the two keep their relative places.
install(FILES README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs PATTERN man EXCLUDE)
install(FILES docs/man/devid.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES docs/man/devid-database.5 DESTINATION ${CMAKE_INSTALL_MANDIR}/man5)
install(FILES completion/devid.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
        RENAME devid)
