# What `cmake --install` adds to the programs, and the Debian package that `cpack -G DEB` makes of it.

set(document ${CMAKE_INSTALL_DATADIR}/doc/ovka)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${document} RENAME copyright)
install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md DESTINATION ${document})
# Built into the programs; here to be read and to begin with.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/presets DESTINATION ${CMAKE_INSTALL_DATADIR}/ovka)
if(OVKA_DESKTOP)
  install(FILES ${PROJECT_SOURCE_DIR}/docs/ovka-desktop.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()

set(CPACK_PACKAGE_NAME ovka)
set(CPACK_PACKAGE_VENDOR "The OVKA authors")
set(CPACK_PACKAGE_CONTACT "The OVKA authors <ovka@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "show, record and play brain waves")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "OVKA shows the brain waves that an EEG amplifier sends over a serial line or Bluetooth, records them
so that nothing is lost even in a crash, and turns bands and peaks into music.
.
The package holds the window (ovka-desktop) and the terminal program (ovka), which needs no display. A
virtual amplifier is built in: everything can be tried without hardware.")
set(CPACK_STRIP_FILES TRUE)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS TRUE)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION TRUE)
# Sounds of its own, OpenGL without a graphics card, a window without X.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "timgm6mb-soundfont, libgl1-mesa-dri, qt6-wayland")
include(CPack)
