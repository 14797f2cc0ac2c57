# Installs the program and what belongs to it. The stand-in of the device's communication library goes
# to a folder of its own, where no other program loads it in place of the real one.
include(GNUInstallDirs)

install(TARGETS quadplayer RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES LICENSE CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES docs/quadplayer.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(DIRECTORY docs/examples DESTINATION ${CMAKE_INSTALL_DOCDIR})

if(TARGET commif AND TARGET quadplayer-hub)
  set(private ${CMAKE_INSTALL_LIBDIR}/quadplayer)
  set_target_properties(quadplayer quadplayer-hub PROPERTIES
    INSTALL_RPATH "$ORIGIN/../${private}")
  install(TARGETS commif LIBRARY DESTINATION ${private})
  install(FILES docs/quadplayer-hub.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(TARGETS quadplayer-hub RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
