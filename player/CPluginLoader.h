// Preloads the plugins that playbin would otherwise load during the first playback: demuxers,
// parsers and decoders of the usual recordings, audio sinks, and the elements between them. It
// makes no element, so it opens no device and takes no hardware decoder. A file that starts
// meanwhile waits for one plugin at most, which it would have loaded itself.
#pragma once

#include <QThread>

class CPluginLoader final : public QThread
{
public:
    CPluginLoader();           // starts at once; after gst_init()
    ~CPluginLoader() override; // waits for the plugin that is being loaded

protected:
    void run() override;
};
