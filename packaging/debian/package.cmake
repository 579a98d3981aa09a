# cpack in the build folder of the preset "package" gives two packages: the programs, and the
# simulated board with the examples, which must not stand where a real cable's servers do.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME signal-scope)
set(CPACK_PACKAGE_CONTACT "The Signal Scope developers <developers@signalscope.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Capture and view the signals inside an FPGA")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL programs simulator)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION electronics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/compress.cmake)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_NAME signal-scope)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_RECOMMENDS qt6-wayland)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_SUGGESTS "signal-scope-simulator, python3")
set(CPACK_COMPONENT_PROGRAMS_DESCRIPTION
    "The desktop side of an on-chip logic analyzer: arms the analyzer cores of a\n\
design through a JTAG cable, waits for the trigger and shows the samples as\n\
waves, or captures from a script.")
set(CPACK_DEBIAN_SIMULATOR_PACKAGE_NAME signal-scope-simulator)
set(CPACK_DEBIAN_SIMULATOR_PACKAGE_DEPENDS "signal-scope (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_SIMULATOR_DESCRIPTION
    "A simulated board for Signal Scope: cable servers, analyzer cores and a\n\
programmer that behave as real ones do, with two example designs. Takes the\n\
place of a real cable's servers.")
include(CPack)
