# Read by cpack before it packs: dpkg-shlibdeps looks for the libraries the
# library needs in the folders of the package's architecture, not the
# machine's, so a cross build finds its arm64 dependencies.
if(CPACK_DEBIAN_PACKAGE_ARCHITECTURE)
  set(ENV{DEB_HOST_ARCH} ${CPACK_DEBIAN_PACKAGE_ARCHITECTURE})
endif()
