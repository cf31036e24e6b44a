# prefix/lib: the effects library and zol.pc; include: zol.h for hosts, SlowMotion.h for users of the slow-motion
# class; bin: zol, which finds the library from where it stands.
include(GNUInstallDirs)

file(RELATIVE_PATH zol_lib_from_bin /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
# One RUNPATH for the build tree and for prefix/bin: nothing in the program names a folder of this machine.
set_target_properties(zol PROPERTIES BUILD_WITH_INSTALL_RPATH ON
                                     INSTALL_RPATH "$ORIGIN:$ORIGIN/${zol_lib_from_bin}")

file(RELATIVE_PATH zol_prefix_from_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" zol_prefix_from_pc "${zol_prefix_from_pc}")
configure_file(cmake/zol.pc.in ${CMAKE_BINARY_DIR}/zol.pc @ONLY)

# What the command tells of its own options.
set(zol_told ${CMAKE_BINARY_DIR}/told)
file(MAKE_DIRECTORY ${zol_told})
add_custom_command(OUTPUT ${zol_told}/zol.1 ${zol_told}/zol ${zol_told}/_zol
  COMMAND zol help --man > ${zol_told}/zol.1
  COMMAND zol completion bash > ${zol_told}/zol
  COMMAND zol completion zsh > ${zol_told}/_zol
  DEPENDS zol)
add_custom_target(zol_told ALL DEPENDS ${zol_told}/zol.1 ${zol_told}/zol ${zol_told}/_zol)
install(FILES ${zol_told}/zol.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${zol_told}/zol DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES ${zol_told}/_zol DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)

install(TARGETS zoeffects zol)
install(FILES frame/zol.h Runtimes/slomo_sdk/SlowMotion.h TYPE INCLUDE)
install(FILES ${CMAKE_BINARY_DIR}/zol.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
install(FILES README.md TYPE DOC)
install(DIRECTORY docs TYPE DOC)
