# Dependencies come from Debian's packages. The kit uses spdlog and fmt header-only on every
# platform, so their symbols stay inside the kit and a host's own spdlog cannot collide with
# the "MOLRA" logger. For the MinGW build the headers are reached through a folder of links,
# so that the cross compiler never sees the rest of /usr/include.
add_library(molra_deps INTERFACE)

if(CMAKE_CROSSCOMPILING)
  set(MOLRA_XINC ${CMAKE_BINARY_DIR}/xinc)
  file(MAKE_DIRECTORY ${MOLRA_XINC})
  foreach(dep spdlog fmt rapidjson SimpleIni.h)
    if(NOT EXISTS ${MOLRA_XINC}/${dep})
      file(CREATE_LINK /usr/include/${dep} ${MOLRA_XINC}/${dep} SYMBOLIC)
    endif()
  endforeach()
  target_include_directories(molra_deps SYSTEM INTERFACE ${MOLRA_XINC})
  target_compile_definitions(molra_deps INTERFACE SPDLOG_HEADER_ONLY FMT_HEADER_ONLY)
else()
  find_package(fmt REQUIRED)
  find_package(spdlog REQUIRED)
  find_package(RapidJSON REQUIRED)
  find_path(SIMPLEINI_INCLUDE_DIR SimpleIni.h REQUIRED)
  target_link_libraries(molra_deps INTERFACE spdlog::spdlog_header_only fmt::fmt-header-only)
  target_include_directories(molra_deps SYSTEM INTERFACE ${RapidJSON_INCLUDE_DIRS} ${RAPIDJSON_INCLUDE_DIRS}
                                                         ${SIMPLEINI_INCLUDE_DIR})
endif()
target_compile_definitions(molra_deps INTERFACE RAPIDJSON_HAS_STDSTRING=1)
