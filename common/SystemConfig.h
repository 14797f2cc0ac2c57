// Reads the folder of the videos from the system configuration of the device.
#pragma once

#include <QString>

class QIODevice;

// The first line, without its end but otherwise as it stands; later ones are not looked at. Empty
// when the file cannot be read. Any thread.
QString readVideoRoot();

// The same from a text that is open already.
QString readVideoRoot(QIODevice& text);
