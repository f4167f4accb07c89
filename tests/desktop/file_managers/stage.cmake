# Installs the build below a folder, as packages are made.
file(REMOVE_RECURSE ${STAGE})
set(ENV{DESTDIR} ${STAGE})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
