#include "fuzz/CraftedDecoder.h"

#include <QByteArray>
#include <QList>

#include <algorithm>
#include <cstring>

#include <gst/base/gstadapter.h>
#include <gst/video/video.h>

namespace {

constexpr char kFirstLine[] = "crafted\n";
constexpr char kMediaType[] = "video/x-crafted";
constexpr qint64 kLargestBuffer = 1 << 22; // enough: one byte read beyond it is a finding
constexpr int kMostFrames = 8;             // more than a platform owns
constexpr int kMostPlanes = 3;

GstStaticPadTemplate s_SinkTemplate = GST_STATIC_PAD_TEMPLATE("sink", GST_PAD_SINK, GST_PAD_ALWAYS,
                                                              GST_STATIC_CAPS("video/x-crafted"));
GstStaticPadTemplate s_SourceTemplate =
    GST_STATIC_PAD_TEMPLATE("src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS("video/x-raw"));

// Gives the words of a line one after the other, then empty texts, which count as 0.
class Words
{
public:
    explicit Words(const QByteArray& line) : m_list(line.simplified().split(' ')) {}
    QByteArray text() { return m_list.isEmpty() ? QByteArray() : m_list.takeFirst(); }
    qint64 number() { return text().toLongLong(); }
    int integer() { return static_cast<int>(number()); }
    bool isEmpty() const { return m_list.isEmpty(); }

private:
    QList<QByteArray> m_list;
};

} // namespace

struct CraftedDecoder
{
    GstElement base;
    GstPad* source;
    GstAdapter* file;
};
struct CraftedDecoderClass
{
    GstElementClass base;
};

G_DEFINE_TYPE(CraftedDecoder, crafted_decoder, GST_TYPE_ELEMENT)

namespace {

CraftedDecoder* decoder(gpointer element)
{
    return static_cast<CraftedDecoder*>(element);
}

GstCaps* readCaps(Words& words)
{
    GstCaps* caps = gst_caps_new_empty_simple("video/x-raw");
    gst_caps_set_simple(caps, "format", G_TYPE_STRING, words.text().constData(), nullptr);
    for (const char* size : {"width", "height"})
        gst_caps_set_simple(caps, size, G_TYPE_INT, words.integer(), nullptr);
    gst_caps_set_simple(caps, "framerate", GST_TYPE_FRACTION, std::max(words.integer(), 0), 1,
                        nullptr);
    return caps;
}

// A block of just this size, so that the address sanitizer sees the first byte beyond it.
GstMemory* newMemory(gsize size)
{
    auto* bytes = static_cast<guint8*>(g_malloc0(std::max<gsize>(size, 1)));
    return gst_memory_new_wrapped({}, bytes, size, 0, size, bytes, g_free);
}

GstBuffer* readBuffer(Words& words)
{
    const qint64 bytes = qBound<qint64>(0, words.number(), kLargestBuffer);
    const qint64 split = qBound<qint64>(0, words.number(), bytes);
    GstBuffer* buffer = gst_buffer_new();
    if (split > 0)
        gst_buffer_append_memory(buffer, newMemory(static_cast<gsize>(split)));
    gst_buffer_append_memory(buffer, newMemory(static_cast<gsize>(bytes - split)));
    GST_BUFFER_PTS(buffer) = static_cast<GstClockTime>(words.number());
    GST_BUFFER_DURATION(buffer) = static_cast<GstClockTime>(words.number());
    return buffer;
}

void addMeta(GstBuffer* buffer, Words& words)
{
    const GstVideoFormat format = gst_video_format_from_string(words.text().constData());
    const auto width = static_cast<guint>(words.number());
    const auto height = static_cast<guint>(words.number());
    const int planes = qBound(0, words.integer(), kMostPlanes);
    gint strides[GST_VIDEO_MAX_PLANES] = {};
    gsize offsets[GST_VIDEO_MAX_PLANES] = {};
    for (int plane = 0; plane < planes; ++plane) {
        strides[plane] = words.integer();
        offsets[plane] = static_cast<gsize>(words.number());
    }
    gst_buffer_add_video_meta_full(buffer, GST_VIDEO_FRAME_FLAG_NONE, format, width, height,
                                   static_cast<guint>(planes), offsets, strides);
}

void pushSegment(GstPad* source, qint64 start)
{
    GstSegment segment;
    gst_segment_init(&segment, GST_FORMAT_TIME);
    segment.start = segment.time = static_cast<guint64>(std::max<qint64>(start, 0));
    gst_pad_push_event(source, gst_event_new_segment(&segment));
}

void pushFrame(GstPad* source, const QByteArray& line)
{
    Words words(line);
    GstCaps* caps = readCaps(words);
    GstCaps* before = gst_pad_get_current_caps(source);
    if (!before || !gst_caps_is_equal(before, caps))
        gst_pad_push_event(source, gst_event_new_caps(caps));
    if (!before)
        pushSegment(source, 0);
    gst_clear_caps(&before);
    gst_caps_unref(caps);
    GstBuffer* buffer = readBuffer(words);
    if (!words.isEmpty())
        addMeta(buffer, words);
    gst_pad_push(source, buffer);
}

void pushFrames(CraftedDecoder* self)
{
    const gsize size = gst_adapter_available(self->file);
    QByteArray text(static_cast<int>(size), '\0');
    gst_adapter_copy(self->file, text.data(), 0, size);
    gst_adapter_clear(self->file);
    for (const QByteArray& line : text.split('\n').mid(1, kMostFrames)) {
        if (line.startsWith("segment "))
            pushSegment(self->source, line.mid(8).toLongLong());
        else
            pushFrame(self->source, line);
    }
}

GstFlowReturn takeBytes(GstPad*, GstObject* self, GstBuffer* buffer)
{
    gst_adapter_push(decoder(self)->file, buffer);
    return GST_FLOW_OK;
}

// What it reads has caps and segments of its own, which are not the frames'.
gboolean takeEvent(GstPad* pad, GstObject* self, GstEvent* event)
{
    const GstEventType type = GST_EVENT_TYPE(event);
    if (type == GST_EVENT_CAPS || type == GST_EVENT_SEGMENT) {
        gst_event_unref(event);
        return TRUE;
    }
    if (type == GST_EVENT_EOS)
        pushFrames(decoder(self));
    return gst_pad_event_default(pad, self, event);
}

void finalize(GObject* self)
{
    g_object_unref(decoder(self)->file);
    G_OBJECT_CLASS(crafted_decoder_parent_class)->finalize(self);
}

void findType(GstTypeFind* find, gpointer)
{
    constexpr guint length = sizeof kFirstLine - 1;
    const guint8* start = gst_type_find_peek(find, 0, length);
    if (start && std::memcmp(start, kFirstLine, length) == 0)
        gst_type_find_suggest_empty_simple(find, GST_TYPE_FIND_MAXIMUM, kMediaType);
}

} // namespace

static void crafted_decoder_class_init(CraftedDecoderClass* klass)
{
    G_OBJECT_CLASS(klass)->finalize = finalize;
    gst_element_class_add_static_pad_template(&klass->base, &s_SinkTemplate);
    gst_element_class_add_static_pad_template(&klass->base, &s_SourceTemplate);
    gst_element_class_set_static_metadata(&klass->base, "Crafted frames", "Codec/Decoder/Video",
                                          "Pushes the frames that a text lists", "quadplayer");
}

static void crafted_decoder_init(CraftedDecoder* self)
{
    self->file = gst_adapter_new();
    GstPad* sink = gst_pad_new_from_static_template(&s_SinkTemplate, "sink");
    gst_pad_set_chain_function(sink, takeBytes);
    gst_pad_set_event_function(sink, takeEvent);
    gst_element_add_pad(&self->base, sink);
    self->source = gst_pad_new_from_static_template(&s_SourceTemplate, "src");
    gst_element_add_pad(&self->base, self->source);
}

void registerCraftedDecoder()
{
    GstCaps* caps = gst_caps_new_empty_simple(kMediaType);
    gst_type_find_register(nullptr, "crafted", GST_RANK_PRIMARY, findType, nullptr, caps, nullptr,
                           nullptr);
    gst_caps_unref(caps);
    gst_element_register(nullptr, "crafteddecoder", GST_RANK_PRIMARY, crafted_decoder_get_type());
}
