# Reads the dynamic symbol table of the library (-DNM=... -DLIBRARY=...): the API is exported and
# nothing else is. Every symbol the library exports names namespace vde, is one of the linker's
# own, or is a plain inline member or the type information of a Qt class (Qt exports its classes
# itself, and an unoptimised build emits more of their inlines); template code of Qt or the
# standard library over other types stays inside the library.
execute_process(COMMAND ${NM} -DC --defined-only ${LIBRARY}
    OUTPUT_VARIABLE table RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
    message(FATAL_ERROR "${NM} failed on ${LIBRARY}")
endif()
string(REPLACE ";" "\\;" table "${table}")
string(REPLACE "\n" ";" lines "${table}")

set(api
    "vde::TDiagObjectList::CreateObjByDiagType(vde::TDiagObjectType, vde::TRect const&)"
    "vde::TDiagConnectList::LoadFromStream("
    "vde::DialogService()"
    "vde::TScriptedDialogService::Expect("
    "typeinfo for vde::EFormatError"
    "typeinfo for vde::EListError"
    "vde::TDiagObject::staticMetaObject"
    "vde::TGraphicControl::staticMetaObject"
    "vde::VelDiagEditVersion()"
    "vde::TTimeChart::PaintLines(")
set(names "")
set(outside "")
set(count 0)
foreach(line IN LISTS lines)
    # "<address> <type> <name>"
    string(REGEX REPLACE "^[0-9a-fA-F]+ [A-Za-z] " "" name "${line}")
    if(name STREQUAL "" OR name STREQUAL line)
        continue()
    endif()
    math(EXPR count "${count} + 1")
    string(APPEND names "${name}\n")
    if(name MATCHES "vde::" OR name MATCHES "^(_init|_fini|_edata|_end|__bss_start)$")
        continue()
    endif()
    if(name MATCHES "^(typeinfo for |typeinfo name for |vtable for )?Q[A-Za-z0-9_]*(::|$)"
            AND NOT name MATCHES "<")
        continue()
    endif()
    list(APPEND outside "${name}")
endforeach()

set(missing "")
foreach(symbol IN LISTS api)
    string(FIND "${names}" "${symbol}" at)
    if(at EQUAL -1)
        list(APPEND missing "${symbol}")
    endif()
endforeach()

list(LENGTH outside n_outside)
if(missing OR outside)
    list(JOIN missing "\n  " missing_text)
    list(SUBLIST outside 0 20 shown)
    list(JOIN shown "\n  " outside_text)
    message(FATAL_ERROR "API not exported:\n  ${missing_text}\n"
        "${n_outside} exported symbols outside the API, for example:\n  ${outside_text}")
endif()
message("exported symbols: ${count}, all of the API and nothing outside it")
