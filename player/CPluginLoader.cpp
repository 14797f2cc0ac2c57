#include "player/CPluginLoader.h"

#include <iterator>

#include <gst/gst.h>

namespace {

// Containers and codecs of the usual recordings.
constexpr const char* kContents[] = {
    "video/quicktime",
    "video/x-msvideo",
    "video/x-h264",
    "video/mpeg, mpegversion = 4, systemstream = false",
    "image/jpeg",
    "audio/mpeg, mpegversion = 4",
    "audio/mpeg, mpegversion = 1, layer = 3",
};

// Plugins that playbin adds to every playback.
constexpr const char* kAround[] = {"coreelements", "typefindfunctions", "videofilter",
                                   "deinterlace",  "autodetect",        "volume",
                                   "audioconvert", "audioresample"};

// Also sets up the class: for some elements that takes as long as loading their plugin.
void load(gpointer factory, gpointer /*user*/)
{
    GstPluginFeature* loaded = gst_plugin_feature_load(GST_PLUGIN_FEATURE(factory));
    if (!loaded)
        return;
    g_type_class_unref(
        g_type_class_ref(gst_element_factory_get_element_type(GST_ELEMENT_FACTORY(loaded))));
    gst_object_unref(loaded);
}

// Loads the first of the fitting elements: playbin tries them in this order.
void loadBest(GstElementFactoryListType kind, const GstCaps* contents)
{
    GList* all = gst_element_factory_list_get_elements(kind, GST_RANK_MARGINAL);
    GList* fitting = gst_element_factory_list_filter(all, contents, GST_PAD_SINK, FALSE);
    if (fitting) // GLib walks the list: the race checker does not see how it reuses nodes
        load(g_list_nth_data(fitting, 0), nullptr);
    gst_plugin_feature_list_free(fitting);
    gst_plugin_feature_list_free(all);
}

void loadForContents(const char* description)
{
    GstCaps* contents = gst_caps_from_string(description);
    loadBest(GST_ELEMENT_FACTORY_TYPE_DEMUXER | GST_ELEMENT_FACTORY_TYPE_PARSER, contents);
    loadBest(GST_ELEMENT_FACTORY_TYPE_DECODER, contents);
    gst_caps_unref(contents);
}

void loadPlugin(const char* name)
{
    GstPlugin* loaded = gst_plugin_load_by_name(name);
    if (loaded)
        gst_object_unref(loaded);
}

// Loads all: playbin tries them one after the other until one finds its device.
void loadAudioSinks()
{
    GList* sinks = gst_element_factory_list_get_elements(
        GST_ELEMENT_FACTORY_TYPE_SINK | GST_ELEMENT_FACTORY_TYPE_MEDIA_AUDIO, GST_RANK_MARGINAL);
    g_list_foreach(sinks, load, nullptr);
    gst_plugin_feature_list_free(sinks);
}

} // namespace

CPluginLoader::CPluginLoader()
{
    start();
}

CPluginLoader::~CPluginLoader()
{
    requestInterruption();
    wait();
}

void CPluginLoader::run()
{
    for (size_t i = 0; i < std::size(kContents) && !isInterruptionRequested(); ++i)
        loadForContents(kContents[i]);
    for (size_t i = 0; i < std::size(kAround) && !isInterruptionRequested(); ++i)
        loadPlugin(kAround[i]);
    if (!isInterruptionRequested())
        loadAudioSinks();
}
