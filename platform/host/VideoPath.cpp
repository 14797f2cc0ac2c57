#include "platform/VideoPath.h"

#include "platform/host/FrameExporter.h"

// The converter in front takes care of formats that the exporter does not read; it passes the
// others through. As playbin's "video-filter" both come after everything in it that copies frames,
// so these keep their memory up to the sink.
void preparePlatformVideoPath(GstElement* playbin)
{
    GstElement* path = gst_bin_new("videopath");
    GstElement* convert = gst_element_factory_make("videoconvert", nullptr);
    GstElement* exporter = makeFrameExporter();
    gst_bin_add_many(GST_BIN(path), convert, exporter, nullptr);
    gst_element_link(convert, exporter);

    GstPad* sink = gst_element_get_static_pad(convert, "sink");
    GstPad* src = gst_element_get_static_pad(exporter, "src");
    gst_element_add_pad(path, gst_ghost_pad_new("sink", sink));
    gst_element_add_pad(path, gst_ghost_pad_new("src", src));
    gst_object_unref(sink);
    gst_object_unref(src);
    g_object_set(playbin, "video-filter", path, nullptr);
}
