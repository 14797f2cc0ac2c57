#include "player/PlaybinRules.h"

#include <cstring>

#include <gst/gst.h>

namespace {

void (*s_pfnHandleMessage)(GstBin*, GstMessage*) = nullptr; // decodebin's own
// streamsynchronizer's own
GstStateChangeReturn (*s_pfnChangeState)(GstElement*, GstStateChange) = nullptr;

bool opensElsewhere(GstElementFactory* factory)
{
    if (gst_element_factory_get_uri_type(factory) != GST_URI_SRC)
        return false;
    const gchar* const* protocols = gst_element_factory_get_uri_protocols(factory);
    return !protocols || !g_strv_contains(protocols, "file");
}

// Their recordings are texts that name other files to open: playlists of streams, and timelines.
bool readsTexts(GstElementFactory* factory)
{
    const gchar* kind = gst_element_factory_get_metadata(factory, GST_ELEMENT_METADATA_KLASS);
    return kind && (std::strstr(kind, "Adaptive") || std::strstr(kind, "Editing"));
}

// It decodes as many frames as a recording's header says of each packet, up to 2^31, and nothing
// can stop it. Other decoders do not.
bool decodesForEver(GstElementFactory* factory)
{
    return std::strcmp(GST_OBJECT_NAME(factory), "speexdec") == 0;
}

void removeIfForbidden(gpointer feature, gpointer registry)
{
    auto* factory = GST_ELEMENT_FACTORY(feature);
    if (opensElsewhere(factory) || readsTexts(factory) || decodesForEver(factory))
        gst_registry_remove_feature(GST_REGISTRY(registry), GST_PLUGIN_FEATURE(feature));
}

void removeForbiddenElements()
{
    GstRegistry* registry = gst_registry_get();
    GList* all = gst_registry_get_feature_list(registry, GST_TYPE_ELEMENT_FACTORY);
    g_list_foreach(all, removeIfForbidden, registry);
    gst_plugin_feature_list_free(all);
}

bool isInOwnThread(GstElement* element)
{
    GstPad* pad = gst_element_get_static_pad(element, "sink");
    if (!pad)
        return false;
    GST_OBJECT_LOCK(pad);
    const GstTask* task = GST_PAD_TASK(pad);
    const bool own = task && task->thread == g_thread_self();
    GST_OBJECT_UNLOCK(pad);
    gst_object_unref(pad);
    return own;
}

// While decodebin plugs an element in, it drops the element's errors and tries the next element
// instead. An element's own thread runs only after that choice: decodebin would lose its error, and
// the file would start for ever.
bool wouldBeLost(GstMessage* error)
{
    if (!GST_IS_ELEMENT(GST_MESSAGE_SRC(error)))
        return false;
    auto* element = GST_ELEMENT(GST_MESSAGE_SRC(error));
    return gst_element_is_locked_state(element) && isInOwnThread(element);
}

// playbin opens the "redirect-location" that it finds in an error's details.
GstMessage* withoutDetails(GstMessage* error)
{
    error = gst_message_make_writable(error);
    gst_structure_remove_field(gst_message_writable_structure(error), "details");
    return error;
}

void handleMessage(GstBin* decodebin, GstMessage* message)
{
    const bool isError = GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR;
    if (isError)
        message = withoutDetails(message);
    if (isError && wouldBeLost(message))
        gst_element_post_message(GST_ELEMENT(decodebin), message);
    else
        s_pfnHandleMessage(decodebin, message);
}

// If a file is stopped while it starts, playsink may keep a pad of its streamsynchronizer, which in
// NULL numbers pads from 0 again. The next file would get the same name, and playsink would abort.
GstStateChangeReturn changeState(GstElement* synchronizer, GstStateChange change)
{
    if (change == GST_STATE_CHANGE_READY_TO_NULL)
        return GST_ELEMENT_CLASS(g_type_class_peek(GST_TYPE_ELEMENT))
            ->change_state(synchronizer, change);
    return s_pfnChangeState(synchronizer, change);
}

// The elements inside playbin are its own; what they do can be changed in their classes only.
// Returns a class that stays, or null.
gpointer classOf(const char* name)
{
    GstElement* element = gst_element_factory_make(name, nullptr);
    if (!element)
        return nullptr;
    gpointer kept = g_type_class_ref(G_OBJECT_TYPE(element));
    gst_object_unref(gst_object_ref_sink(element));
    return kept;
}

void takeDecodebinsMessages()
{
    if (auto* decodebin = static_cast<GstBinClass*>(classOf("decodebin"))) {
        s_pfnHandleMessage = decodebin->handle_message;
        decodebin->handle_message = handleMessage;
    }
}

void keepPadNamesUnique()
{
    if (auto* synchronizer = static_cast<GstElementClass*>(classOf("streamsynchronizer"))) {
        s_pfnChangeState = synchronizer->change_state;
        synchronizer->change_state = changeState;
    }
}

} // namespace

void setPlaybinRules()
{
    if (s_pfnHandleMessage)
        return;
    removeForbiddenElements();
    takeDecodebinsMessages();
    keepPadNamesUnique();
}
