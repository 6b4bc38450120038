################################################################################
#
# renewer
#
################################################################################

RENEWER_VERSION = 1.1.4
RENEWER_SOURCE = renewer-$(RENEWER_VERSION).tar.gz
# Where your releases lie: a directory, or a server's address.
RENEWER_SITE = $(call qstrip,$(BR2_RENEWER_SITE))
RENEWER_LICENSE = MIT
RENEWER_LICENSE_FILES = LICENSE
RENEWER_DEPENDENCIES = host-pkgconf libmd
RENEWER_CONF_OPTS = -DCMAKE_BUILD_TYPE=MinSizeRel -DCMAKE_INSTALL_PREFIX=/data -DRENEWER_TESTS=OFF -DRENEWER_TOOLS=OFF

ifeq ($(BR2_PACKAGE_RENEWER_LIBRARIES),y)
RENEWER_INSTALL_STAGING = YES
RENEWER_DEPENDENCIES += libsodium
RENEWER_CONF_OPTS += -DRENEWER_LIBRARIES=ON
define RENEWER_INSTALL_STAGING_CMDS
	DESTDIR=$(STAGING_DIR) $(HOST_DIR)/bin/cmake --install $(@D) --prefix /usr --component dev
endef
else
RENEWER_CONF_OPTS += -DRENEWER_LIBRARIES=OFF
endif

define RENEWER_INSTALL_TARGET_CMDS
	DESTDIR=$(TARGET_DIR) $(HOST_DIR)/bin/cmake --install $(@D) --component updater
endef

$(eval $(cmake-package))
