# The install step: libraries, public headers, the camera simulator, the tool,
# a CMake package (find_package(Tavik)) and pkg-config files.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(TAVIK_PRODUCER_DIR ${CMAKE_INSTALL_LIBDIR}/tavik/producers)
set(TAVIK_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Tavik)

install(TARGETS TavikC TavikImageTransform TavikCPP LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES entry/include/TavikC.h entry/include/TavikCommon.h
              imaging/include/TavikImageTransform.h sim/include/TavikSimControl.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY object_api/include/TavikCPP DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS TavikSim LIBRARY DESTINATION ${TAVIK_PRODUCER_DIR})

# The tool finds the library relative to itself wherever the tree is installed.
file(RELATIVE_PATH _tavik_bin_to_lib /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
set_target_properties(tavik PROPERTIES INSTALL_RPATH "$ORIGIN/${_tavik_bin_to_lib}")
install(TARGETS tavik RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

configure_package_config_file(cmake/TavikConfig.cmake.in ${CMAKE_BINARY_DIR}/TavikConfig.cmake
  INSTALL_DESTINATION ${TAVIK_PACKAGE_DIR}
  PATH_VARS CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_INCLUDEDIR TAVIK_PRODUCER_DIR)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/TavikConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/TavikConfig.cmake ${CMAKE_BINARY_DIR}/TavikConfigVersion.cmake
        DESTINATION ${TAVIK_PACKAGE_DIR})

# The pkg-config files find their prefix from where they lie, so an installed tree can move.
file(RELATIVE_PATH TAVIK_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" TAVIK_PC_TO_PREFIX ${TAVIK_PC_TO_PREFIX})
foreach(_pc tavik tavik-imagetransform tavik-cpp)
  configure_file(cmake/${_pc}.pc.in ${CMAKE_BINARY_DIR}/${_pc}.pc @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/${_pc}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
