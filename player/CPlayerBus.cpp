// CPlayer's bus handler: the pipeline's outcomes become signals.
#include "player/CPlayer.h"

#include <QDebug>

namespace {

void printError(GstMessage* message)
{
    GError* error = nullptr;
    gchar* details = nullptr;
    gst_message_parse_error(message, &error, &details);
    qDebug() << "++ GST_MESSAGE_ERROR .. " << (error && error->message ? error->message : "");
    g_clear_error(&error);
    g_free(details);
}

} // namespace

// Runs in whatever thread posts the message, so it may only emit. Nobody would take a message off
// the bus: those of a damaged file would fill the memory.
GstBusSyncReply CPlayer::bus_callback(GstBus* /*bus*/, GstMessage* message, void* user)
{
    auto* player = static_cast<CPlayer*>(user);
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_ERROR:
        printError(message);
        emit player->sgPlayError();
        break;
    case GST_MESSAGE_EOS:
        qDebug() << "End of stream!!!";
        emit player->sgPlayFinished();
        break;
    default:
        break;
    }
    gst_message_unref(message);
    return GST_BUS_DROP;
}
