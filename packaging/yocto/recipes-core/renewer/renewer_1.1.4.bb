SUMMARY = "On-device firmware updater of a receiver family"
LICENSE = "MIT"
LIC_FILES_CHKSUM = "file://LICENSE;md5=f25d8827f2c8202a9334c084a0eff61d"

# Where your releases lie, and what SHA256SUMS of the release says of the tarball.
RENEWER_SITE ?= "file://${TOPDIR}/../releases"
SRC_URI = "${RENEWER_SITE}/renewer-${PV}.tar.gz"

DEPENDS = "libmd"
inherit cmake pkgconfig

# The updater replaces itself in /data/sbin, where the main application starts it.
EXTRA_OECMAKE = "-DCMAKE_BUILD_TYPE=MinSizeRel -DCMAKE_INSTALL_PREFIX=/data -DRENEWER_TESTS=OFF -DRENEWER_TOOLS=OFF"

PACKAGECONFIG ??= ""
PACKAGECONFIG[libraries] = "-DRENEWER_LIBRARIES=ON,-DRENEWER_LIBRARIES=OFF,libsodium"

do_install() {
    DESTDIR=${D} cmake --install ${B} --component updater
    if ${@bb.utils.contains('PACKAGECONFIG', 'libraries', 'true', 'false', d)}; then
        DESTDIR=${D} cmake --install ${B} --prefix ${prefix} --component dev
    fi
}

FILES:${PN} = "/data/sbin/renewer"
FILES:${PN}-dev += "${libdir}/cmake ${libdir}/pkgconfig"
FILES:${PN}-staticdev = "${libdir}/*.a"
