// Loads ahead what playbin would load while the first file waits for it: the code of the demuxers,
// parsers and decoders for what recordings are made of, of the audio sinks, and of what stands
// between them. No element is made, so no device is opened and no decoder taken. A file that is
// started meanwhile waits for the plugin that is being loaded and is no slower than without this.
#pragma once

#include <QThread>

class CPluginLoader : public QThread
{
    Q_OBJECT

public:
    using QThread::QThread;    // after gst_init()
    ~CPluginLoader() override; // waits for the plugin that is being loaded

protected:
    void run() override;
};
