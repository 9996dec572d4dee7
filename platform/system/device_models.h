#pragma once

#include <string>

#include "platform/system/device_facts.h"

namespace plat {

// One model of device as its screen looks to an application: the size in points at its native
// scale, and whether it has a Home button (a short status bar, no home indicator) or not (a
// taller status bar and a bottom inset over which the home indicator floats).
struct DeviceModel {
    const char* productType;
    DeviceFamily family;
    const char* name;
    double width, height;  // portrait, in points
    int scale;
    bool homeButton;
    double statusBar;    // height in points
    double bottomInset;  // the home indicator's strip; 0 with a Home button
};

// The model with this product type; null when the table does not know it.
const DeviceModel* modelNamed(const std::string& productType);

// The model `device init` writes for a family at a scale; null when the family never had a
// screen of that scale (no iPad or iPod was made at 3x).
const DeviceModel* modelFor(DeviceFamily family, int scale);

// The family's usual model, for a family given without a scale.
const DeviceModel& defaultModel(DeviceFamily family);

// What the device is: its product type when the table knows it, else the model of its family
// at its scale, else the family's usual model.
const DeviceModel& modelOf(const DeviceFacts& facts);

// Every model the table knows, for documentation and tests.
struct DeviceModelList {
    const DeviceModel* first;
    std::size_t count;
    const DeviceModel* begin() const { return first; }
    const DeviceModel* end() const { return first + count; }
};
DeviceModelList knownModels();

}  // namespace plat
