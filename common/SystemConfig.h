// Reads the folder of the videos from the system configuration of the device.
#pragma once

#include <QString>

class QIODevice;

// Returns the first line without its line end, and empty if the file cannot be read. Any thread.
QString readVideoRoot();

// Reads an open text instead of the device's file.
QString readVideoRoot(QIODevice& text);
