# The man pages, which the programs print themselves; none where those cannot run while they are built for another
# machine.
if(CMAKE_CROSSCOMPILING)
  return()
endif()

set(pages)
# kolvex_add_page(<name> <target> <arguments that print it>...)
function(kolvex_add_page name program)
  set(page ${PROJECT_BINARY_DIR}/man/${name}.1)
  add_custom_command(OUTPUT ${page} COMMAND ${CMAKE_COMMAND} -E env ASAN_OPTIONS=detect_leaks=0 $<TARGET_FILE:${program}> ${ARGN} > ${page}
                     DEPENDS ${program} COMMENT "Writing ${name}(1)" VERBATIM)
  set(pages ${pages} ${page} PARENT_SCOPE)
endfunction()

file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/man)
kolvex_add_page(kolvex kolvex --man)
kolvex_add_page(kolvex-batch batch --man)
kolvex_add_page(kolvex-batch-collect batch collect --man)
kolvex_add_page(kolvex-batch-status batch status --man)
kolvex_add_page(kolvex-check inspect_commands check --man)
kolvex_add_page(kolvex-export export_program --man)
kolvex_add_page(kolvex-import import_program --man)
kolvex_add_page(kolvex-locate locate --man)
kolvex_add_page(kolvex-params inspect_commands params --man)
# The extraction has the arguments behind its name to itself, so the launcher has its page.
kolvex_add_page(kolvex-quarnish kolvex --man quarnish)
kolvex_add_page(kolvex-report report_program --man)
kolvex_add_page(kolvex-run run --man)
kolvex_add_page(kolvex-show inspect_commands show --man)
kolvex_add_page(kolvex-verify verify --man)
add_custom_target(man_pages ALL DEPENDS ${pages})
install(FILES ${pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT documentation)
