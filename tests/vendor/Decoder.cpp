// Decoders like hardware ones: H.264 or JPEG in, and out what the frame exporter that is linked in
// makes of the frames. Their rank makes playbin choose them.
#include "platform/open/FrameExporter.h"

#include <gst/gst.h>

namespace {

constexpr guint kBeforeAllOthers = GST_RANK_PRIMARY + 100;

struct Codec
{
    const char* name;
    const char* software; // the element that decodes
    GstStaticPadTemplate sink;
};
Codec s_codecs[] = {
    {"quadplayerh264decoder", "avdec_h264",
     GST_STATIC_PAD_TEMPLATE("sink", GST_PAD_SINK, GST_PAD_ALWAYS,
                             GST_STATIC_CAPS("video/x-h264, alignment = au"))},
    {"quadplayerjpegdecoder", "avdec_mjpeg",
     GST_STATIC_PAD_TEMPLATE("sink", GST_PAD_SINK, GST_PAD_ALWAYS, GST_STATIC_CAPS("image/jpeg"))}};
GstStaticPadTemplate s_SourceTemplate = GST_STATIC_PAD_TEMPLATE(
    "src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS("video/x-raw, format = NV12"));

struct DecoderClass
{
    GstBinClass base;
    Codec* codec;
};

void initClass(gpointer klass, gpointer codec)
{
    static_cast<DecoderClass*>(klass)->codec = static_cast<Codec*>(codec);
    GstElementClass* element = GST_ELEMENT_CLASS(klass);
    gst_element_class_add_static_pad_template(element, &static_cast<Codec*>(codec)->sink);
    gst_element_class_add_static_pad_template(element, &s_SourceTemplate);
    gst_element_class_set_static_metadata(element, "Decoder", "Codec/Decoder/Video/Hardware",
                                          "In place of a hardware decoder", "quadplayer");
}

void addGhostPad(GstElement* bin, GstElement* element, const char* name)
{
    GstPad* target = gst_element_get_static_pad(element, name);
    gst_element_add_pad(bin, gst_ghost_pad_new(name, target));
    gst_object_unref(target);
}

void initDecoder(GTypeInstance* decoder, gpointer klass)
{
    Codec* codec = static_cast<DecoderClass*>(klass)->codec;
    GstElement* software = gst_element_factory_make(codec->software, nullptr);
    GstElement* convert = gst_element_factory_make("videoconvert", nullptr);
    GstElement* exporter = newFrameExporter();
    gst_bin_add_many(GST_BIN(decoder), software, convert, exporter, nullptr);
    gst_element_link_many(software, convert, exporter, nullptr);
    addGhostPad(GST_ELEMENT(decoder), software, "sink");
    addGhostPad(GST_ELEMENT(decoder), exporter, "src");
}

gboolean registerDecoders(GstPlugin* plugin)
{
    for (Codec& codec : s_codecs) {
        const GTypeInfo info = {
            sizeof(DecoderClass), nullptr, nullptr,     initClass, nullptr, &codec,
            sizeof(GstBin),       0,       initDecoder, nullptr};
        const GType type = g_type_register_static(GST_TYPE_BIN, codec.name, &info, {});
        if (!gst_element_register(plugin, codec.name, kBeforeAllOthers, type))
            return FALSE;
    }
    return TRUE;
}

} // namespace

#define PACKAGE "quadplayer"
GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, quadplayerdecoder,
                  "In place of a hardware decoder", registerDecoders, "1.0", "MIT/X11", PACKAGE,
                  "quadplayer")
