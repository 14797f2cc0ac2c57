// CPlayer's frame pump: from the appsink through the sample store to the hand-off.
#include "player/CPlayer.h"

#include "platform/phymem.h"
#include "player/EngineClock.h"

#include <QDebug>
#include <QMutexLocker>
#include <QThread>
#include <QWaitCondition>

#include <utility>

#include <gst/app/gstappsink.h>

namespace {

constexpr unsigned long kIdleNapMs = 10; // at most, while the store is empty

// Longest sleep before a frame: quitting or seeking back must not wait for the end of a long gap in
// the stream. Frames of any usual rate come sooner.
constexpr qint64 kLongestSleepUs = 100000;

constexpr int kFormatIsNv12 = 1;

qint64 presentationTimeUs(GstSample* sample)
{
    return nanosecondsToUs(static_cast<qint64>(GST_BUFFER_PTS(gst_sample_get_buffer(sample))));
}

// After a flush, appsink reuses its last sample object; keep our own.
GstSample* ownSample(GstSample* pulled)
{
    GstSample* own = gst_sample_new(gst_sample_get_buffer(pulled), gst_sample_get_caps(pulled),
                                    nullptr, nullptr);
    gst_sample_unref(pulled);
    return own;
}

// Map and unmap dropped frames too: the platform takes the unmap as "shown", and holds back the end
// of stream until then.
void discard(GstSample* sample)
{
    GstBuffer* buffer = gst_sample_get_buffer(sample);
    GstMapInfo map = {};
    if (gst_buffer_map(buffer, &map, GST_MAP_READ))
        gst_buffer_unmap(buffer, &map);
    gst_sample_unref(sample);
}

bool readSize(GstSample* sample, int* width, int* height)
{
    GstCaps* caps = gst_sample_get_caps(sample);
    if (!caps || gst_caps_is_empty(caps))
        return false;
    const GstStructure* structure = gst_caps_get_structure(caps, 0);
    return gst_structure_get_int(structure, "width", width) &&
           gst_structure_get_int(structure, "height", height);
}

} // namespace

GstFlowReturn CPlayer::on_new_sample_from_sink(GstElement* sink, void* user)
{
    auto* player = static_cast<CPlayer*>(user);
    GstSample* sample = gst_app_sink_pull_sample(GST_APP_SINK(sink));
    if (sample)
        player->storeSample(ownSample(sample));
    return GST_FLOW_OK;
}

void CPlayer::storeSample(GstSample* sample)
{
    const qint64 key = presentationTimeUs(sample);
    QMutexLocker lock(m_pMutex);
    GstSample* unwanted = sample;
    // Look at the flag under the lock: a frame decoded before a flush must not enter after it.
    if (m_bAcceptSamples)
        unwanted = std::exchange(m_mapSamples[key], sample);
    m_pSampleStored->wakeOne();
    lock.unlock();
    if (unwanted)
        discard(unwanted);
}

qint64 CPlayer::firstSampleTime()
{
    const QMutexLocker lock(m_pMutex);
    return m_mapSamples.isEmpty() ? -1 : m_mapSamples.firstKey();
}

GstSample* CPlayer::takeSample(const qint64& key)
{
    const QMutexLocker lock(m_pMutex);
    return m_mapSamples.take(key);
}

void CPlayer::flushSamples()
{
    m_bAcceptSamples = false; // before the lock, see storeSample()
    QMutexLocker lock(m_pMutex);
    const auto samples = std::exchange(m_mapSamples, {});
    lock.unlock();
    for (GstSample* sample : samples)
        gst_sample_unref(sample);
}

void CPlayer::slotProcessSample()
{
    qDebug() << "++ CPlayer::slotProcessSample() tid=" << QThread::currentThreadId();
    while (!m_bQuit)
        processNextSample();
    QThread::currentThread()->exit(0);
    qDebug() << "++ CPlayer::slotProcessSample() quit ...";
}

// One pass of the loop. After a sleep it returns, because a flush, a seek or an earlier frame may
// have changed which frame comes first.
void CPlayer::processNextSample()
{
    const qint64 dueUs = firstSampleTime();
    if (dueUs == -1) {
        napWhileEmpty();
        return;
    }
    const qint64 elapsedUs = currentTimeUs() - m_nBaseTimeUs;
    if (elapsedUs < dueUs) {
        QThread::usleep(static_cast<unsigned long>(qMin(dueUs - elapsedUs, kLongestSleepUs)));
        return;
    }
    m_bPresenting = true; // before the frame leaves the store: waitForWorker() follows a flush
    if (GstSample* sample = takeSample(dueUs))
        presentSample(sample);
    m_bPresenting = false;
}

// A stored frame ends the nap: the first frame of a file is due at once.
void CPlayer::napWhileEmpty()
{
    const QMutexLocker lock(m_pMutex);
    if (m_mapSamples.isEmpty())
        m_pSampleStored->wait(m_pMutex, kIdleNapMs);
}

// Unmap after the hand-off has returned: the GPU reads the buffer until then.
void CPlayer::presentSample(GstSample* sample)
{
    GstBuffer* buffer = gst_sample_get_buffer(sample);
    int width = 0;
    int height = 0;
    const bool sized = readSize(sample, &width, &height);
    GstMapInfo map = {};
    const bool mapped = gst_buffer_map(buffer, &map, GST_MAP_READ);
    if (!gst_buffer_is_phymem(buffer)) {
        qDebug() << "Not a phy mem block, sz=" << map.size;
    } else if (sized) {
        handOn(buffer, width, height);
    }
    emit sgUpdateData();
    if (mapped)
        gst_buffer_unmap(buffer, &map);
    gst_sample_unref(sample);
}

void CPlayer::handOn(GstBuffer* buffer, int width, int height)
{
    const PhyMemBlock* block = gst_buffer_query_phymem_block(buffer);
    m_pfnVideoData(kFormatIsNv12, block->paddr, block->vaddr, width, height, m_pVideoUserData);
}
