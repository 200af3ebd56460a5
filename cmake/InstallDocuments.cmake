# Installs what there is to read beside the man pages, in one place.

set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME documentation)
install(FILES README.md SECURITY.md DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(FILES docs/guide.md docs/inspect.svg DESTINATION "${CMAKE_INSTALL_DOCDIR}/docs")
if(NOT H265_DEBIAN_PACKAGES) # which have these under Debian's names
  install(FILES CHANGELOG.md LICENSE DESTINATION "${CMAKE_INSTALL_DOCDIR}")
endif()
install(DIRECTORY examples DESTINATION "${CMAKE_INSTALL_DOCDIR}")
if(H265_API_REFERENCE) # what scripts/docs.sh has made
  install(DIRECTORY "${H265_API_REFERENCE}/" DESTINATION "${CMAKE_INSTALL_DOCDIR}/html")
endif()
unset(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME)
