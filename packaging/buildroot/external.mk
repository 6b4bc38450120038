include $(sort $(wildcard $(BR2_EXTERNAL_RENEWER_PATH)/package/*/*.mk))
