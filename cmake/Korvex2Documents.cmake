# What authors of modules and clients read, installed beside the headers: documents, their pictures, the example.
set(documents_folder "${CMAKE_INSTALL_DATAROOTDIR}/doc/korvex2")

install(FILES docs/backend-protocol.md docs/module-authors.md DESTINATION "${documents_folder}" COMPONENT Development)
install(FILES docs/images/bodylist.png DESTINATION "${documents_folder}/images" COMPONENT Development)
install(FILES examples/bodylist/CMakeLists.txt examples/bodylist/bodylist.cpp
  DESTINATION "${documents_folder}/examples/bodylist" COMPONENT Development)

# The operator's guide shows the module's own icons, which lie elsewhere in the source tree.
set(guide "${PROJECT_SOURCE_DIR}/docs/user-guide.md")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${guide}")
file(READ "${guide}" guide_text)
string(REGEX MATCHALL "SourceFiles/resources/[A-Za-z0-9_-]+[.]png" guide_icons "${guide_text}")
list(REMOVE_DUPLICATES guide_icons)
string(REPLACE "../SourceFiles/resources/" "images/" guide_text "${guide_text}")
file(WRITE "${PROJECT_BINARY_DIR}/documents/user-guide.md" "${guide_text}")
install(FILES "${PROJECT_BINARY_DIR}/documents/user-guide.md" DESTINATION "${documents_folder}" COMPONENT Development)
install(FILES ${guide_icons} DESTINATION "${documents_folder}/images" COMPONENT Development)
