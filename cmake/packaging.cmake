# What `cmake --install` adds beyond the library, the headers and quorvel.pc
# (installed beside their targets), and the Debian packages CPack makes:
#   libquorvelN     the shared library (component Runtime)
#   libquorvel-dev  headers, the development link, quorvel.pc and the CMake
#                   package config (component Development)
# The command-line client and the emulator are installed (component Tools)
# but not packaged: they are for trying and testing, not for hosts.

include(CMakePackageConfigHelpers)

install(TARGETS quorvel_cli quorvel_emu_main
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Tools)

# ---------------------------------------------------------------- find_package
set(QUORVEL_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Quorvel)
install(EXPORT QuorvelTargets NAMESPACE Quorvel::
        DESTINATION ${QUORVEL_CMAKE_DIR} COMPONENT Development)
configure_package_config_file(${CMAKE_SOURCE_DIR}/cmake/QuorvelConfig.cmake.in
  ${CMAKE_BINARY_DIR}/QuorvelConfig.cmake INSTALL_DESTINATION ${QUORVEL_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/QuorvelConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/QuorvelConfig.cmake
              ${CMAKE_BINARY_DIR}/QuorvelConfigVersion.cmake
        DESTINATION ${QUORVEL_CMAKE_DIR} COMPONENT Development)

# ---------------------------------------------------------------- CPack
# The package architecture follows the target, not the machine building it.
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
  set(QUORVEL_DEB_ARCH arm64)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64)$")
  set(QUORVEL_DEB_ARCH amd64)
else()
  set(QUORVEL_DEB_ARCH ${CMAKE_SYSTEM_PROCESSOR})
endif()
set(QUORVEL_RUNTIME_PACKAGE libquorvel${PROJECT_VERSION_MAJOR})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quorvel)
set(CPACK_PACKAGE_VENDOR "Quorvel")
set(CPACK_PACKAGE_CONTACT "Quorvel maintainers <maintainers@quorvel.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Client library for IP cameras")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL Runtime Development)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${QUORVEL_DEB_ARCH})

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${QUORVEL_RUNTIME_PACKAGE})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
# The library's own dependencies, read from its ELF header by dpkg-shlibdeps.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_SOURCE_DIR}/cmake/cpack_project.cmake)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "Client library for IP cameras: login, PTZ, configuration, files, playback, talk, live streams, discovery")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libquorvel-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "${QUORVEL_RUNTIME_PACKAGE} (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "Client library for IP cameras: C headers, pkg-config file and CMake package")

include(CPack)
