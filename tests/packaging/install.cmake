# Installs what the tests have built to TO and moves it to MOVED: nothing may point back to TO.
file(REMOVE_RECURSE ${TO} ${MOVED})
foreach(component runtime scanner development tools)
  execute_process(COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET
    COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${TO} --component ${component})
endforeach()
file(RENAME ${TO} ${MOVED})
