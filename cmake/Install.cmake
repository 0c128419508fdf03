# What `cmake --install` puts under the prefix (docs/install.md):
#   lib/libsecmolra.so (Windows: bin/secmolra.dll, lib/libsecmolra.dll.a), include/secmolra.h,
#   lib/cmake/secmolra/ (find_package(secmolra) gives secmolra::secmolra),
#   lib/pkgconfig/secmolra.pc, lib/secmolra/kelapi50.dll (the simulated transport),
#   bin/molra-simd (the simulated back end as a server),
#   share/secmolra/examples/ (the C++ examples, buildable on their own), share/doc/secmolra/.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(MOLRA_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/secmolra)
set(MOLRA_SIM_DIR ${CMAKE_INSTALL_LIBDIR}/secmolra)
set(MOLRA_EXAMPLES_DIR ${CMAKE_INSTALL_DATADIR}/secmolra/examples)

# Hosts in this tree and installed hosts use the same name and get the header with it.
add_library(secmolra::secmolra ALIAS secmolra)
target_include_directories(secmolra INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
                           $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
set_target_properties(secmolra PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})

install(TARGETS secmolra EXPORT secmolraTargets
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES ${PROJECT_SOURCE_DIR}/include/secmolra.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
# The transport is loaded at run time as ./kelapi50.dll, never linked: a plain file.
install(FILES $<TARGET_FILE:kelapi50> DESTINATION ${MOLRA_SIM_DIR})
install(TARGETS molra-simd RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

install(EXPORT secmolraTargets NAMESPACE secmolra:: DESTINATION ${MOLRA_CMAKE_DIR})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/secmolraConfig.cmake.in
  ${CMAKE_BINARY_DIR}/secmolraConfig.cmake INSTALL_DESTINATION ${MOLRA_CMAKE_DIR}
  PATH_VARS MOLRA_SIM_DIR MOLRA_EXAMPLES_DIR)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/secmolraConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/secmolraConfig.cmake ${CMAKE_BINARY_DIR}/secmolraConfigVersion.cmake
        DESTINATION ${MOLRA_CMAKE_DIR})

# The .pc file finds its prefix from its own place, so an unpacked package works as well as
# an installed one.
file(RELATIVE_PATH MOLRA_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" MOLRA_PC_TO_PREFIX "${MOLRA_PC_TO_PREFIX}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/secmolra.pc.in ${CMAKE_BINARY_DIR}/secmolra.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/secmolra.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(FILES ${PROJECT_SOURCE_DIR}/examples/CMakeLists.txt ${PROJECT_SOURCE_DIR}/examples/hello.cpp
              ${PROJECT_SOURCE_DIR}/examples/trade.cpp ${PROJECT_SOURCE_DIR}/examples/host_support.h
              ${PROJECT_SOURCE_DIR}/examples/molra.ini
        DESTINATION ${MOLRA_EXAMPLES_DIR})
install(FILES ${PROJECT_SOURCE_DIR}/docs/configuration.md ${PROJECT_SOURCE_DIR}/docs/interface.md
              ${PROJECT_SOURCE_DIR}/docs/hosts.md
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/secmolra)
