// The fixed paths of the device. DEVICE_ROOT is empty on the device; the demo and the tests set it
// to a folder of the build tree.
#pragma once

namespace DevicePaths {

constexpr char kPositionConfig[] = DEVICE_ROOT "/home/kvr/1_morvastine/cfg_position.txt";
constexpr char kSystemConfig[] = DEVICE_ROOT "/home/kvr/1_morvastine/cfg_system.txt";
constexpr char kFont[] = DEVICE_ROOT "/home/kvr/res/simsun.ttc";
constexpr char kChecked[] = DEVICE_ROOT "/home/kvr/res/radiobutton-checked-md.png";
constexpr char kUnchecked[] = DEVICE_ROOT "/home/kvr/res/radiobutton-unchecked-md.png";

} // namespace DevicePaths
