// Loads ahead what playbin would load while the first file waits for it: the code of the demuxers,
// parsers and decoders for what recordings are made of, of the audio sinks, and of what stands
// between them. No element is made, so no device is opened and no decoder taken. A file that is
// started meanwhile waits for the plugin that is being loaded and is no slower than without this.
#pragma once

#include <atomic>
#include <thread>

class CPluginLoader
{
public:
    CPluginLoader();  // starts at once; after gst_init()
    ~CPluginLoader(); // waits for the plugin that is being loaded
    CPluginLoader(const CPluginLoader&) = delete;
    CPluginLoader& operator=(const CPluginLoader&) = delete;

private:
    void run();

    std::atomic<bool> m_bQuit{false};
    std::thread m_Thread; // last: it uses what stands above
};
