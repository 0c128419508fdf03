# Packages made by `cpack` in a build folder (docs/install.md):
#   Linux:   secmolra_VERSION_amd64.deb and secmolra-VERSION-Linux.tar.gz
#   Windows: secmolra-VERSION-win64.zip, which adds what a host built with Microsoft's tools
#            needs: secmolra.def (from the DLL's export table), secmolra.lib (an import
#            library in Microsoft's format, made with llvm-dlltool) and README-windows.md.
set(MOLRA_PACKAGE_CONTACT "molra maintainers <maintainers@molra.invalid>" CACHE STRING
    "Maintainer named in the packages")

set(CPACK_PACKAGE_NAME secmolra)
set(CPACK_PACKAGE_VENDOR molra)
set(CPACK_PACKAGE_CONTACT ${MOLRA_PACKAGE_CONTACT})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "molra trading kit: library, header, CMake and pkg-config files, simulated transport")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_STRIP_FILES ON)

if(WIN32)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_PACKAGE_FILE_NAME secmolra-${PROJECT_VERSION}-win64)

  find_program(MOLRA_LLVM_DLLTOOL NAMES llvm-dlltool llvm-dlltool-14)
  find_program(MOLRA_LLVM_READOBJ NAMES llvm-readobj llvm-readobj-14)
  find_package(Python3 COMPONENTS Interpreter)
  if(NOT MOLRA_LLVM_DLLTOOL OR NOT MOLRA_LLVM_READOBJ OR NOT Python3_FOUND)
    message(WARNING "llvm-dlltool, llvm-readobj or python3 missing (Debian: llvm, python3): "
                    "the package will lack secmolra.def, secmolra.lib and README-windows.md")
  else()
    set(MOLRA_DEF ${CMAKE_BINARY_DIR}/secmolra.def)
    set(MOLRA_MSVC_LIB ${CMAKE_BINARY_DIR}/secmolra.lib)
    add_custom_command(OUTPUT ${MOLRA_DEF} ${MOLRA_MSVC_LIB}
      COMMAND ${CMAKE_COMMAND} -DDLL=$<TARGET_FILE:secmolra> -DDEF=${MOLRA_DEF} -DLIB=${MOLRA_MSVC_LIB}
              -DREADOBJ=${MOLRA_LLVM_READOBJ} -DDLLTOOL=${MOLRA_LLVM_DLLTOOL}
              -P ${CMAKE_CURRENT_LIST_DIR}/ImportLibrary.cmake
      DEPENDS secmolra ${CMAKE_CURRENT_LIST_DIR}/ImportLibrary.cmake
      COMMENT "secmolra.def and secmolra.lib from the export table of secmolra.dll")
    add_custom_target(secmolra_msvc_lib ALL DEPENDS ${MOLRA_DEF} ${MOLRA_MSVC_LIB})

    # The README names the exports that take std::vector, read from the header.
    set(MOLRA_README_WINDOWS ${CMAKE_BINARY_DIR}/README-windows.md)
    add_custom_command(OUTPUT ${MOLRA_README_WINDOWS}
      COMMAND ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/scripts/interface_doc.py
              --windows-readme ${CMAKE_CURRENT_LIST_DIR}/README-windows.md.in ${MOLRA_README_WINDOWS}
      DEPENDS ${PROJECT_SOURCE_DIR}/include/secmolra.h ${PROJECT_SOURCE_DIR}/scripts/interface_doc.py
              ${CMAKE_CURRENT_LIST_DIR}/README-windows.md.in
      COMMENT "README-windows.md")
    add_custom_target(secmolra_readme_windows ALL DEPENDS ${MOLRA_README_WINDOWS})

    install(FILES ${MOLRA_DEF} ${MOLRA_MSVC_LIB} DESTINATION ${CMAKE_INSTALL_LIBDIR})
    install(FILES ${MOLRA_README_WINDOWS} DESTINATION .)
  endif()
else()
  set(CPACK_GENERATOR DEB TGZ)
  set(CPACK_PACKAGE_FILE_NAME secmolra-${PROJECT_VERSION}-Linux)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_SECTION libdevel)
  # Dependencies from what the shipped ELF files need (dpkg-shlibdeps): the C and C++
  # runtimes and Debian's fmt (libfmt9); spdlog is compiled into the kit.
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
endif()

include(CPack)
