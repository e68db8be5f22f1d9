# The application bundle and its disk image. Written without a Mac at hand: not yet built.
#   cmake --build build --target dmg
configure_file("${CMAKE_CURRENT_LIST_DIR}/Info.plist.in" "${CMAKE_CURRENT_BINARY_DIR}/Info.plist" @ONLY)

set(bundle "${CMAKE_BINARY_DIR}/OSTRA.app")
find_program(MACDEPLOYQT macdeployqt REQUIRED)
add_custom_target(bundle
    COMMAND ${CMAKE_COMMAND} -E make_directory "${bundle}/Contents/MacOS" "${bundle}/Contents/Helpers"
            "${bundle}/Contents/Resources"
    COMMAND ${CMAKE_COMMAND} -E copy "$<TARGET_FILE:ostra>" "${bundle}/Contents/MacOS/ostra"
    COMMAND ${CMAKE_COMMAND} -E copy "$<TARGET_FILE:ostra-daemon>" "${bundle}/Contents/Helpers/ostra-daemon"
    COMMAND ${CMAKE_COMMAND} -E copy_directory "${OSTRA_SHARE_DIR}" "${bundle}/Contents/Resources"
    COMMAND ${CMAKE_COMMAND} -E copy "${CMAKE_CURRENT_BINARY_DIR}/Info.plist" "${bundle}/Contents/Info.plist"
    COMMAND sh "${CMAKE_CURRENT_LIST_DIR}/make_icns.sh" "${icon_dir}" "${bundle}/Contents/Resources/ostra.icns"
    COMMAND "${MACDEPLOYQT}" "${bundle}" -qmldir=${PROJECT_SOURCE_DIR}/src
            -executable=${bundle}/Contents/Helpers/ostra-daemon
    DEPENDS ostra ostra-daemon icons guide)
add_custom_target(dmg
    COMMAND hdiutil create -volname OSTRA -srcfolder "${bundle}" -ov -format UDZO
            "${CMAKE_BINARY_DIR}/OSTRA-${PROJECT_VERSION}.dmg"
    DEPENDS bundle)
