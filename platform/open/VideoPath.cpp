#include "platform/VideoPath.h"

#include "platform/open/FrameExporter.h"

namespace {

void addGhostPad(GstElement* bin, GstElement* element, const char* name)
{
    GstPad* target = gst_element_get_static_pad(element, name);
    gst_element_add_pad(bin, gst_ghost_pad_new(name, target));
    gst_object_unref(target);
}

// With a thread for each frame, software decoders hold back a frame for each and need more memory:
// 20 MB at 1920x1080, and the first picture comes later. A hardware decoder does neither. Called in
// the thread that adds the element, before it is started.
void decodeInOrder(GstElement* /*playbin*/, GstElement* element, gpointer /*user*/)
{
    if (g_object_class_find_property(G_OBJECT_GET_CLASS(element), "thread-type"))
        gst_util_set_object_arg(G_OBJECT(element), "thread-type", "slice");
}

} // namespace

void preparePlatformVideoPath(GstElement* playbin)
{
    GstElement* bin = gst_bin_new("videopath");
    GstElement* convert = gst_element_factory_make("videoconvert", nullptr);
    GstElement* exporter = newFrameExporter();
    gst_bin_add_many(GST_BIN(bin), convert, exporter, nullptr);
    gst_element_link(convert, exporter);
    addGhostPad(bin, convert, "sink");
    addGhostPad(bin, exporter, "src");
    g_object_set(playbin, "video-filter", bin, nullptr);
    g_signal_connect(playbin, "element-setup", G_CALLBACK(decodeInOrder), nullptr);
}
