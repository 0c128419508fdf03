# Writes the module-definition file of a DLL from its export table and an import library in
# Microsoft's format from that:
#   cmake -DDLL=secmolra.dll -DDEF=secmolra.def -DLIB=secmolra.lib -DREADOBJ=llvm-readobj
#         -DDLLTOOL=llvm-dlltool -P ImportLibrary.cmake
execute_process(COMMAND ${READOBJ} --coff-exports ${DLL} OUTPUT_VARIABLE exports
                RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "${READOBJ} --coff-exports ${DLL} failed")
endif()
string(REGEX MATCHALL "\n *Name: [^\n]+" lines "${exports}")
if(NOT lines)
  message(FATAL_ERROR "${DLL} exports nothing")
endif()
get_filename_component(dll_name ${DLL} NAME)
set(def "LIBRARY ${dll_name}\nEXPORTS\n")
foreach(line ${lines})
  string(REGEX REPLACE "\n *Name: " "" name "${line}")
  string(APPEND def "  ${name}\n")
endforeach()
file(WRITE ${DEF} "${def}")
execute_process(COMMAND ${DLLTOOL} -m i386:x86-64 -D ${dll_name} -d ${DEF} -l ${LIB} RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "${DLLTOOL} failed to write ${LIB}")
endif()
