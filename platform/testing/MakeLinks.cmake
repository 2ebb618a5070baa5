# Makes the links of the premade-links fixture in FOLDER: Wine cannot make
# symbolic links, so the host makes them before the Windows tests run.
#   store/Sessions     -> ../outside
#   store/filelink.ini -> ../outside/secret.ini
file(REMOVE_RECURSE ${FOLDER})
file(MAKE_DIRECTORY ${FOLDER}/store ${FOLDER}/outside)
file(WRITE ${FOLDER}/outside/secret.ini "secret")
file(CREATE_LINK ../outside ${FOLDER}/store/Sessions SYMBOLIC)
file(CREATE_LINK ../outside/secret.ini ${FOLDER}/store/filelink.ini SYMBOLIC)
