// CPlayer's bus handler: turns the pipeline's outcomes into signals and lines on the debug stream.
#include "player/CPlayer.h"

#include <QDebug>
#include <QRegularExpression>

namespace {

// Recordings choose some of the texts: a line break in one would forge a line of the log, and an
// escape sequence would reach the terminal.
QString printable(QString text)
{
    static const QRegularExpression unprintable(QStringLiteral("[\\p{C}\\p{Zl}\\p{Zp}]"));
    return text.replace(unprintable, QStringLiteral("?"));
}

QString textOf(const GError* error)
{
    return error ? QString::fromUtf8(error->message) : QString();
}

// The lines before the last one name a place in GStreamer's source.
QString lastLine(const gchar* details)
{
    return QString::fromUtf8(details).section(QLatin1Char('\n'), -1);
}

QString missingPlugin(GstMessage* message)
{
    const gchar* name = gst_structure_get_string(gst_message_get_structure(message), "name");
    return QStringLiteral("no GStreamer plugin is installed for it: ") + QString::fromUtf8(name);
}

} // namespace

void CPlayer::reportError(const QString& text, const QString& details)
{
    qDebug().noquote() << "++ GST_MESSAGE_ERROR .. " << printable(text);
    printLine(details.isEmpty() ? text : details);
    emit sgPlayError();
}

void CPlayer::printLine(const QString& text) const
{
    qDebug().noquote() << "++ CPlayer file" << printable(m_strFile) << ":" << printable(text);
}

// Runs in whatever thread posts the message, so it may only emit and print. It drops every message,
// because nobody takes them off the bus: those of a damaged file would fill the memory.
GstBusSyncReply CPlayer::bus_callback(GstBus* /*bus*/, GstMessage* message, void* user)
{
    auto* player = static_cast<CPlayer*>(user);
    GError* error = nullptr;
    gchar* details = nullptr;
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_ERROR:
        gst_message_parse_error(message, &error, &details);
        player->reportError(textOf(error), lastLine(details));
        break;
    case GST_MESSAGE_WARNING: // a missing sound device, for one
        gst_message_parse_warning(message, &error, &details);
        if (error && error->domain == GST_RESOURCE_ERROR)
            player->printLine(QString::fromUtf8(GST_MESSAGE_SRC_NAME(message)) +
                              QStringLiteral(": ") + textOf(error));
        break;
    case GST_MESSAGE_ELEMENT:
        if (gst_message_has_name(message, "missing-plugin"))
            player->printLine(missingPlugin(message));
        break;
    case GST_MESSAGE_EOS:
        qDebug() << "End of stream!!!";
        emit player->sgPlayFinished();
        break;
    default:
        break;
    }
    g_clear_error(&error);
    g_free(details);
    gst_message_unref(message);
    return GST_BUS_DROP;
}
