# What `cmake --install` puts where, in three components: the library with what it loads, what
# developers need, and the tools.

include(CMakePackageConfigHelpers)

set(BREVIK_CMAKE_FOLDER ${CMAKE_INSTALL_LIBDIR}/cmake/brevikconfig)
set(BREVIK_EXAMPLES_FOLDER ${CMAKE_INSTALL_DATADIR}/brevikconfig/examples)

install(TARGETS brevikconfig brevikplatform EXPORT brevikconfig-targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library
        NAMELINK_COMPONENT development)
install(TARGETS brevikctl RUNTIME COMPONENT tools)

# The header of hosts, and beneath a folder of their own those of component authors.
install(FILES include/brevikconfig.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(DIRECTORY src/platform DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/brevikconfig
        COMPONENT development FILES_MATCHING PATTERN "*.h" PATTERN posix EXCLUDE)

install(EXPORT brevikconfig-targets NAMESPACE brevikconfig:: DESTINATION ${BREVIK_CMAKE_FOLDER}
        COMPONENT development)
configure_package_config_file(cmake/brevikconfig-config.cmake.in brevikconfig-config.cmake
                              INSTALL_DESTINATION ${BREVIK_CMAKE_FOLDER})
write_basic_package_version_file(brevikconfig-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/brevikconfig-config.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/brevikconfig-config-version.cmake
        DESTINATION ${BREVIK_CMAKE_FOLDER} COMPONENT development)

# Relative to its own place, so that the whole may be moved.
file(RELATIVE_PATH BREVIK_PC_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/brevikconfig.pc.in brevikconfig.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/brevikconfig.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# The demo, with the key that it signs with where that is one of development.
install(DIRECTORY examples/ DESTINATION ${BREVIK_EXAMPLES_FOLDER} COMPONENT development
        FILES_MATCHING PATTERN "*.c" PATTERN "*.cpp" PATTERN "*.py" PATTERN "*.txt" PATTERN CMakeLists.txt EXCLUDE)
install(PROGRAMS examples/demo.sh DESTINATION ${BREVIK_EXAMPLES_FOLDER} COMPONENT development)
if(BREVIK_KEY_NOTE)
    install(FILES keys/DEVELOPMENT-ONLY-private-key.txt DESTINATION ${BREVIK_EXAMPLES_FOLDER}/keys
            COMPONENT development)
endif()
