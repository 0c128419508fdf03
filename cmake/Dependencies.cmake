# Dependencies come from Debian's packages.
#
# fmt: Debian's compiled library (libfmt.so) on Linux; fmt's own header-only mode for MinGW,
# which has no build of it.
# spdlog: compiled into the kit (its bodies once, in molra_spdlog), so that its symbols stay
# inside the kit and a host's own spdlog cannot share the registry that holds the "MOLRA"
# logger.
# For the MinGW build the headers are reached through a folder of links, so that the cross
# compiler never sees the rest of /usr/include.
find_package(Threads REQUIRED)
add_library(molra_dep_headers INTERFACE)

# molra_header_links(DIR PACKAGES HEADER...): links in DIR to the headers (files or folders)
# of /usr/include, which the Debian PACKAGES install.
function(molra_header_links dir packages)
  file(MAKE_DIRECTORY ${dir})
  foreach(dep ${ARGN})
    if(NOT EXISTS /usr/include/${dep})
      message(FATAL_ERROR "/usr/include/${dep} is missing: install ${packages}")
    endif()
    if(NOT EXISTS ${dir}/${dep})
      file(CREATE_LINK /usr/include/${dep} ${dir}/${dep} SYMBOLIC)
    endif()
  endforeach()
endfunction()

if(CMAKE_CROSSCOMPILING)
  set(MOLRA_XINC ${CMAKE_BINARY_DIR}/xinc)
  molra_header_links(${MOLRA_XINC} "libspdlog-dev libfmt-dev rapidjson-dev libsimpleini-dev"
                     spdlog fmt rapidjson SimpleIni.h)
  target_include_directories(molra_dep_headers SYSTEM INTERFACE ${MOLRA_XINC})
  target_compile_definitions(molra_dep_headers INTERFACE FMT_HEADER_ONLY)
else()
  find_package(fmt REQUIRED)
  find_package(spdlog REQUIRED)
  find_package(RapidJSON REQUIRED)
  find_path(SIMPLEINI_INCLUDE_DIR SimpleIni.h REQUIRED)
  target_include_directories(molra_dep_headers SYSTEM INTERFACE
    $<TARGET_PROPERTY:spdlog::spdlog_header_only,INTERFACE_INCLUDE_DIRECTORIES>
    ${RapidJSON_INCLUDE_DIRS} ${RAPIDJSON_INCLUDE_DIRS} ${SIMPLEINI_INCLUDE_DIR})
  target_link_libraries(molra_dep_headers INTERFACE fmt::fmt)
endif()
# Header-only spdlog costs every file that logs seconds of compiling: its bodies are compiled
# once instead (cmake/spdlog_compiled.cpp).
target_compile_definitions(molra_dep_headers INTERFACE SPDLOG_FMT_EXTERNAL SPDLOG_COMPILED_LIB
                           RAPIDJSON_HAS_STDSTRING=1)

add_library(molra_spdlog STATIC ${CMAKE_CURRENT_LIST_DIR}/spdlog_compiled.cpp)
target_link_libraries(molra_spdlog PUBLIC molra_dep_headers Threads::Threads)

add_library(molra_deps INTERFACE)
target_link_libraries(molra_deps INTERFACE molra_spdlog)
