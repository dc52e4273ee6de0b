# Installs what a person may change: the configuration and the sample files. A file that is there
# and differs is kept, and the new sample is put beside it under its name and ".new".
# Run by `cmake --install`, which sets CMAKE_INSTALL_PREFIX; PELVAN_SAMPLES is set before.

# A function, since its variables must not be seen by the rest of the installation.
function(pelvan_install_samples)
  set(destination "${CMAKE_INSTALL_PREFIX}/pelvan7")
  file(GLOB sequences RELATIVE "${PELVAN_SAMPLES}" "${PELVAN_SAMPLES}/Download Sequences/*")
  foreach(sample pelvan7.ini simulated-742.PV5 ${sequences})
    set(new "${PELVAN_SAMPLES}/${sample}")
    set(present "$ENV{DESTDIR}${destination}/${sample}")
    get_filename_component(folder "${destination}/${sample}" DIRECTORY)
    get_filename_component(name "${sample}" NAME)
    execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files "${new}" "${present}"
                    RESULT_VARIABLE differs OUTPUT_QUIET ERROR_QUIET)
    if(EXISTS "${present}" AND differs)
      message(STATUS "Kept: ${present}; the new sample is ${name}.new beside it")
      string(APPEND name ".new")
    endif()
    file(INSTALL DESTINATION "${folder}" TYPE FILE FILES "${new}" RENAME "${name}")
  endforeach()
endfunction()

pelvan_install_samples()
