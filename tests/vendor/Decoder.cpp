// A decoder like a hardware one: H.264 in, and out what the frame exporter that is linked in
// makes of the frames. Its rank makes playbin choose it.
#include "platform/open/FrameExporter.h"

#include <gst/gst.h>

namespace {

constexpr guint kBeforeAllOthers = GST_RANK_PRIMARY + 100;

GstStaticPadTemplate s_SinkTemplate = GST_STATIC_PAD_TEMPLATE(
    "sink", GST_PAD_SINK, GST_PAD_ALWAYS, GST_STATIC_CAPS("video/x-h264, alignment = au"));
GstStaticPadTemplate s_SourceTemplate = GST_STATIC_PAD_TEMPLATE(
    "src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS("video/x-raw, format = NV12"));

} // namespace

struct QuadplayerDecoder
{
    GstBin base;
};
struct QuadplayerDecoderClass
{
    GstBinClass base;
};

G_DEFINE_TYPE(QuadplayerDecoder, quadplayer_decoder, GST_TYPE_BIN)

namespace {

void addGhostPad(GstElement* bin, GstElement* element, GstStaticPadTemplate* pad)
{
    GstPad* target = gst_element_get_static_pad(element, pad->name_template);
    GstPadTemplate* shape = gst_static_pad_template_get(pad);
    gst_element_add_pad(bin, gst_ghost_pad_new_from_template(pad->name_template, target, shape));
    gst_object_unref(shape);
    gst_object_unref(target);
}

gboolean registerDecoder(GstPlugin* plugin)
{
    return gst_element_register(plugin, "quadplayerdecoder", kBeforeAllOthers,
                                quadplayer_decoder_get_type());
}

} // namespace

static void quadplayer_decoder_class_init(QuadplayerDecoderClass* klass)
{
    GstElementClass* element = GST_ELEMENT_CLASS(klass);
    gst_element_class_add_static_pad_template(element, &s_SinkTemplate);
    gst_element_class_add_static_pad_template(element, &s_SourceTemplate);
    gst_element_class_set_static_metadata(element, "H.264 decoder", "Codec/Decoder/Video/Hardware",
                                          "In place of a hardware decoder", "quadplayer");
}

static void quadplayer_decoder_init(QuadplayerDecoder* decoder)
{
    GstElement* software = gst_element_factory_make("avdec_h264", nullptr);
    GstElement* convert = gst_element_factory_make("videoconvert", nullptr);
    GstElement* exporter = newFrameExporter();
    gst_bin_add_many(GST_BIN(decoder), software, convert, exporter, nullptr);
    gst_element_link_many(software, convert, exporter, nullptr);
    addGhostPad(GST_ELEMENT(decoder), software, &s_SinkTemplate);
    addGhostPad(GST_ELEMENT(decoder), exporter, &s_SourceTemplate);
}

#define PACKAGE "quadplayer"
GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, quadplayerdecoder,
                  "In place of a hardware decoder", registerDecoder, "1.0", "MIT/X11", PACKAGE,
                  "quadplayer")
