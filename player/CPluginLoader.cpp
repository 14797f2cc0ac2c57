#include "player/CPluginLoader.h"

#include <iterator>

#include <gst/gst.h>

namespace {

// What recordings are made of.
constexpr const char* kContents[] = {
    "video/quicktime",
    "video/x-msvideo",
    "video/x-h264",
    "video/mpeg, mpegversion = 4, systemstream = false",
    "image/jpeg",
    "audio/mpeg, mpegversion = 4",
    "audio/mpeg, mpegversion = 1, layer = 3",
};

// What playbin puts around them by its own choice.
constexpr const char* kAround[] = {"coreelements", "typefindfunctions", "videofilter",
                                   "deinterlace",  "autodetect",        "volume",
                                   "audioconvert", "audioresample"};

// The class comes with it, for some take as long to set up as to load.
void load(gpointer factory, gpointer /*user*/)
{
    GstPluginFeature* loaded = gst_plugin_feature_load(GST_PLUGIN_FEATURE(factory));
    if (!loaded)
        return;
    g_type_class_unref(
        g_type_class_ref(gst_element_factory_get_element_type(GST_ELEMENT_FACTORY(loaded))));
    gst_object_unref(loaded);
}

// Of those that take the contents, the first one that playbin would try.
void loadBest(GstElementFactoryListType kind, const GstCaps* contents)
{
    GList* all = gst_element_factory_list_get_elements(kind, GST_RANK_MARGINAL);
    GList* fitting = gst_element_factory_list_filter(all, contents, GST_PAD_SINK, FALSE);
    if (fitting) // nodes are left to GLib: a race checker does not see how it hands their memory on
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

// All of them: they are tried one after the other until one finds its device.
void loadAudioSinks()
{
    GList* sinks = gst_element_factory_list_get_elements(
        GST_ELEMENT_FACTORY_TYPE_SINK | GST_ELEMENT_FACTORY_TYPE_MEDIA_AUDIO, GST_RANK_MARGINAL);
    g_list_foreach(sinks, load, nullptr);
    gst_plugin_feature_list_free(sinks);
}

} // namespace

CPluginLoader::CPluginLoader() : m_Thread(&CPluginLoader::run, this) {}

CPluginLoader::~CPluginLoader()
{
    m_bQuit = true;
    m_Thread.join();
}

void CPluginLoader::run()
{
    for (size_t i = 0; i < std::size(kContents) && !m_bQuit; ++i)
        loadForContents(kContents[i]);
    for (size_t i = 0; i < std::size(kAround) && !m_bQuit; ++i)
        loadPlugin(kAround[i]);
    if (!m_bQuit)
        loadAudioSinks();
}
