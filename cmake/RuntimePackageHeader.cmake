# Run by the build: writes OUTPUT from TEMPLATE with the size and the SHA-256 of PACKAGE.
file(SIZE "${PACKAGE}" PACKAGE_SIZE)
file(SHA256 "${PACKAGE}" PACKAGE_SHA256)
configure_file("${TEMPLATE}" "${OUTPUT}" @ONLY)
# Also when nothing in it changed, so that it is not older than the package.
file(TOUCH "${OUTPUT}")
