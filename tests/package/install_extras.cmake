# Installs the library into a scratch prefix and checks that the translations and the Qt
# Designer plugin come with it, and that the installed plugin loads as Designer loads it.
file(REMOVE_RECURSE ${PREFIX})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${PREFIX}
    RESULT_VARIABLE rc OUTPUT_QUIET)
if(NOT rc EQUAL 0)
    message(FATAL_ERROR "install failed (${rc})")
endif()
if(IS_ABSOLUTE ${PLUGIN_DIR})
    set(plugin ${PLUGIN_DIR}/${PLUGIN_NAME})
else()
    set(plugin ${PREFIX}/${PLUGIN_DIR}/${PLUGIN_NAME})
endif()
foreach(f ${PREFIX}/share/velDiagEdit/translations/veldiagedit_en.qm
        ${PREFIX}/share/velDiagEdit/translations/veldiagedit_ru.qm ${plugin})
    if(NOT EXISTS ${f})
        message(FATAL_ERROR "not installed: ${f}")
    endif()
endforeach()
execute_process(COMMAND ${CMAKE_COMMAND} -E env VDE_DESIGNER_PLUGIN_FILE=${plugin}
    QT_QPA_PLATFORM=offscreen ${PLUGIN_TEST} --gtest_filter=DesignerPlugin.*
    RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE out)
if(NOT rc EQUAL 0)
    message(FATAL_ERROR "the installed plugin did not serve Designer:\n${out}")
endif()
message("installed translations and the Designer plugin in ${PLUGIN_DIR}, which loads")
