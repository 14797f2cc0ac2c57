#include "player/CPlayer.h"

#include "platform/VideoPath.h"
#include "player/CPluginLoader.h"
#include "player/EngineClock.h"
#include "player/PlaybinRules.h"

#include <QByteArray>
#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QMutex>
#include <QThread>
#include <QWaitCondition>

namespace {

constexpr qint64 kNsPerSecond = GST_SECOND;
constexpr qint64 kSeekStep = 34 * kNsPerSecond;
constexpr unsigned long kWorkerPollUs = 100;
constexpr char kScheme[] = "file://";

// playbin's flags for video, audio, subtitles and visualisation.
constexpr int kPlayFlags = 0x0F;

const char* text(bool value)
{
    return value ? "true" : "false";
}

} // namespace

CPlayer::CPlayer(VideoDataCallback pfnVideoData, void* pVideoUserData)
    : m_pfnVideoData(pfnVideoData),
      m_pVideoUserData(pVideoUserData),
      m_pMutex(new QMutex),
      m_pSampleStored(new QWaitCondition),
      m_pThread(new QThread(this))
{
    m_pThread->setObjectName(QStringLiteral("frame pump"));
    connect(m_pThread, SIGNAL(started()), this, SLOT(slotProcessSample()));
    moveToThread(m_pThread);
    m_pThread->start(QThread::InheritPriority);
}

CPlayer::~CPlayer()
{
    m_bQuit = true;
    m_pThread->requestInterruption();
    flushSamples();
    releasePipeline();
    if (m_pThread->isRunning()) {
        m_pThread->quit();
        m_pThread->wait();
    }
    delete m_pThread;
    m_pThread = nullptr;
    delete m_pLoader;
    delete m_pSampleStored;
    delete m_pMutex;
}

void CPlayer::initPipeline()
{
    if (m_bInited)
        return;
    gst_init(nullptr, nullptr);
    setPlaybinRules();
    m_pPipeline = gst_element_factory_make("playbin", "playbin0");
    m_pAppSink = gst_element_factory_make("appsink", "appsink0");
    g_object_set(m_pPipeline, "video-sink", m_pAppSink, nullptr);
    preparePlatformVideoPath(m_pPipeline);
    g_object_set(m_pAppSink, "emit-signals", TRUE, "sync", FALSE, nullptr);
    g_signal_connect(m_pAppSink, "new-sample", G_CALLBACK(on_new_sample_from_sink), this);
    m_pBus = gst_element_get_bus(m_pPipeline);
    gst_element_set_state(m_pPipeline, GST_STATE_READY);
    gst_bus_set_sync_handler(m_pBus, bus_callback, this, nullptr);
    m_bInited = true;
}

void CPlayer::loadAhead()
{
    if (!m_pLoader)
        m_pLoader = new CPluginLoader;
}

void CPlayer::releasePipeline()
{
    if (!m_bInited)
        return;
    gst_element_set_state(m_pPipeline, GST_STATE_NULL);
    gst_object_unref(m_pPipeline);
    gst_object_unref(m_pBus);
    m_pPipeline = nullptr;
    m_pAppSink = nullptr;
    m_pBus = nullptr;
    m_bInited = false;
}

void CPlayer::playFile(const char* path)
{
    const QByteArray uri = kScheme + QByteArray(path);
    g_object_set(m_pPipeline, "uri", uri.constData(), nullptr);
    int flags = 0;
    g_object_get(m_pPipeline, "flags", &flags, nullptr);
    g_object_set(m_pPipeline, "flags", flags | kPlayFlags, nullptr);
    playPause();
}

void CPlayer::playPause()
{
    if (!m_bPlaying)
        startFromIdle();
    else if (m_bPause)
        resume();
    else
        pause();
}

void CPlayer::startFromIdle()
{
    m_bAcceptSamples = true;
    m_nBaseTimeUs = currentTimeUs();
    if (hasPlayableFile())
        gst_element_set_state(m_pPipeline, GST_STATE_PLAYING);
    m_bPlaying = true;
    m_bPause = false;
    emit sgRestartPlay();
    emit sgSendPlayingState(true, false);
}

// GStreamer would fail silently without a file, and block in open() on a FIFO or a device.
bool CPlayer::hasPlayableFile()
{
    gchar* uri = nullptr;
    g_object_get(m_pPipeline, "uri", &uri, nullptr);
    m_strFile = QFile::decodeName(QByteArray(uri).mid(qstrlen(kScheme)));
    g_free(uri);
    const QFileInfo file(m_strFile);
    if (m_strFile.isEmpty())
        reportError(QStringLiteral("No file was chosen"), QString());
    else if (file.exists() && !file.isFile())
        reportError(QStringLiteral("Not a regular file"), QString());
    else
        return true;
    return false;
}

void CPlayer::resume()
{
    m_bAcceptSamples = true;
    const qint64 now = currentTimeUs();
    const qint64 position = queryPosition();
    m_nBaseTimeUs = position == kUnknown ? now : now - nanosecondsToUs(position);
    changeState(GST_STATE_PLAYING);
    m_bPause = false;
    emit sgSendPlayingState(m_bPlaying, false);
}

void CPlayer::pause()
{
    m_bAcceptSamples = false;
    changeState(GST_STATE_PAUSED);
    m_bPause = true;
    emit sgSendPlayingState(m_bPlaying, true);
}

// After a start that failed, playbin would start again beside its first threads and wait for them
// for ever; after one that was refused, it would open what is no file. Both can only be stopped.
void CPlayer::changeState(GstState state)
{
    const bool refused = GST_STATE_TARGET(m_pPipeline) < GST_STATE_PAUSED;
    if (!refused &&
        gst_element_get_state(m_pPipeline, nullptr, nullptr, 0) != GST_STATE_CHANGE_FAILURE)
        gst_element_set_state(m_pPipeline, state);
}

void CPlayer::stop()
{
    qDebug() << "+++ CPlayer::stop() start ...m_bPlaying=" << text(m_bPlaying)
             << " m_bPause=" << text(m_bPause);
    if (m_bPlaying || m_bPause) {
        flushSamples();
        gst_element_set_state(m_pPipeline, GST_STATE_NULL);
        m_bPlaying = false;
        m_bPause = false;
        emit sgSendPlayingState(false, false);
    }
    qDebug() << "+++ CPlayer::stop() end ...";
}

void CPlayer::seekForward()
{
    if (!m_bPlaying && !m_bPause)
        return;
    const qint64 position = queryPosition();
    const qint64 duration = queryDuration();
    if (position == kUnknown || duration == kUnknown)
        return;
    flushSamples();
    const qint64 target = position + kSeekStep;
    seekTo(target < duration ? target : qMax<qint64>(duration - kNsPerSecond, 0));
}

void CPlayer::seekBackward()
{
    if (!m_bPlaying && !m_bPause)
        return;
    const qint64 position = queryPosition();
    if (position == kUnknown)
        return;
    flushSamples();
    seekTo(qMax<qint64>(position - kSeekStep, 0));
}

void CPlayer::seekTo(qint64 target)
{
    gst_element_seek_simple(m_pPipeline, GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH, target);
    m_nBaseTimeUs = currentTimeUs() - nanosecondsToUs(target);
    m_bAcceptSamples = true;
}

void CPlayer::waitForWorker() const
{
    while (m_bPresenting)
        QThread::usleep(kWorkerPollUs);
}

qint64 CPlayer::queryDuration() const
{
    gint64 duration = kUnknown;
    return gst_element_query_duration(m_pPipeline, GST_FORMAT_TIME, &duration) ? duration
                                                                               : kUnknown;
}

qint64 CPlayer::queryPosition() const
{
    gint64 position = kUnknown;
    return gst_element_query_position(m_pPipeline, GST_FORMAT_TIME, &position) ? position
                                                                               : kUnknown;
}
