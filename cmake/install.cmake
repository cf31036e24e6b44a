# prefix/lib: the effects library and zol.pc; include: zol.h for hosts, SlowMotion.h for users of the slow-motion
# class; bin: zol, which finds the library from where it stands.
include(GNUInstallDirs)

file(RELATIVE_PATH zol_lib_from_bin /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
set_target_properties(zol PROPERTIES BUILD_RPATH "$ORIGIN" INSTALL_RPATH "$ORIGIN/${zol_lib_from_bin}")

file(RELATIVE_PATH zol_prefix_from_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" zol_prefix_from_pc "${zol_prefix_from_pc}")
configure_file(cmake/zol.pc.in ${CMAKE_BINARY_DIR}/zol.pc @ONLY)

install(TARGETS zoeffects zol)
install(FILES frame/zol.h Runtimes/slomo_sdk/SlowMotion.h TYPE INCLUDE)
install(FILES ${CMAKE_BINARY_DIR}/zol.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
install(FILES README.md TYPE DOC)
install(DIRECTORY docs TYPE DOC)
