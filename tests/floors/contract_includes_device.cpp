// Must not build: the contract sits below the emulated device.
#include "device/device_init.h"
