// The playback engine: one playbin whose decoded frames are handed on at their presentation time.
//
// Thread                   Started by        Runs here
// GUI thread               the program       construction, initPipeline(), transport, queries,
//                                            flushSamples(), destruction
// worker (m_pThread)       the constructor   slotProcessSample() and what it calls: it reads the
//                                            store, the clock base and m_bQuit, and blocks in the
//                                            hand-off until the frame has been drawn
// GStreamer's streaming    the pipeline      on_new_sample_from_sink(), storeSample(), and
// threads                                    bus_callback(), which reads m_strFile only
// loader (m_pLoader)       loadAhead()       CPluginLoader, which knows nothing of the engine
//
// Locks: m_pMutex guards m_mapSamples and nothing else. Only the store operations and the nap hold
// it, and never with another lock: releasing a sample takes locks of the platform, so samples are
// released after it is unlocked.
//
// Stopping a file, in this order: flush the store, because a decoder that waits for a free frame
// may block the pipeline; set the pipeline to NULL, which ends the streaming threads. Nothing is
// stored after the flush. The worker may still hold one sample.
//
// Ending, in this order: set m_bQuit and interrupt the worker; flush the store; set the pipeline to
// NULL; join the worker. A hand-off that waits for a repaint must watch
// QThread::isInterruptionRequested(), or the join never ends: the GUI thread, which would repaint,
// is the one that waits.
//
// Times: GStreamer's in ns, the engine's own in us.
#pragma once

#include "player/VideoDataCallback.h"

#include <QMap>
#include <QObject>

#include <atomic>

#include <gst/gst.h>

class CPluginLoader;
class QMutex;
class QThread;
class QWaitCondition;

class CPlayer : public QObject
{
    Q_OBJECT

public:
    CPlayer(VideoDataCallback pfnVideoData, void* pVideoUserData);
    ~CPlayer() override;

    void initPipeline(); // builds the pipeline; later calls do nothing
    void releasePipeline();

    // Preloads plugins in a thread, so that the first start is as fast as later ones. Call it after
    // initPipeline().
    void loadAhead();

    // Starts a file by its absolute path. Call stop() first, or a file that plays is paused
    // instead. sgPlayError() reports a file that cannot be played, possibly inside this call.
    void playFile(const char* path);
    void playPause(); // start, pause or resume
    void stop();
    void seekForward();  // 34 s, but never past one second before the end
    void seekBackward(); // 34 s, but never before the start

    static constexpr qint64 kUnknown = -1;
    qint64 queryDuration() const; // ns, or kUnknown
    qint64 queryPosition() const; // ns, or kUnknown; runs ahead of the picture by the frames stored

    bool isPlaying() const { return m_bPlaying; } // a file is loaded, playing or paused

    // Waits until the worker has released the sample that it took out of the store. After stop(),
    // it then holds nothing of that file. The receiver has to let the hand-off end meanwhile.
    void waitForWorker() const;

signals:
    void sgPlayError();    // streaming thread, or GUI thread inside a state change
    void sgPlayFinished(); // streaming thread
    void sgUpdateData();   // worker thread, once per sample taken out of the store
    void sgSendPlayingState(bool bPlaying, bool bPause); // GUI thread
    void sgRestartPlay();                                // GUI thread

public slots:
    void slotProcessSample(); // worker thread, for the engine's whole life

private:
    static GstBusSyncReply bus_callback(GstBus* bus, GstMessage* message, void* user);
    static GstFlowReturn on_new_sample_from_sink(GstElement* sink, void* user);

    void startFromIdle();
    bool hasPlayableFile();                                        // reports an error if not
    void reportError(const QString& text, const QString& details); // any thread
    void printLine(const QString& text) const;                     // any thread; names the file
    void resume();
    void pause();
    void changeState(GstState state); // not after a failed start
    void seekTo(qint64 target);       // ns; flush the store first

    void storeSample(GstSample* sample); // takes over the reference; releases it if not accepting
    qint64 firstSampleTime();            // us, -1: the store is empty
    GstSample* takeSample(const qint64& key);
    void flushSamples();

    void processNextSample();
    void napWhileEmpty();
    void presentSample(GstSample* sample);
    void handOn(GstBuffer* buffer, int width, int height);

    // Set once, before the worker starts.
    const VideoDataCallback m_pfnVideoData;
    void* const m_pVideoUserData;

    // GUI thread only.
    GstElement* m_pPipeline = nullptr;
    GstElement* m_pAppSink = nullptr; // owned by the pipeline
    GstBus* m_pBus = nullptr;

    QString m_strFile; // path; GUI writes while no streaming thread runs, any thread reads

    std::atomic<qint64> m_nBaseTimeUs{0}; // when stream time 0 is due; GUI writes, worker reads

    QMap<qint64, GstSample*> m_mapSamples; // by presentation time in us; one reference each
    QMutex* m_pMutex;
    QWaitCondition* m_pSampleStored; // belongs to m_pMutex; ends the worker's nap

    // GUI thread only.
    CPluginLoader* m_pLoader = nullptr;
    bool m_bInited = false;
    bool m_bPlaying = false;
    bool m_bPause = false;

    QThread* m_pThread;
    std::atomic<bool> m_bQuit{false};          // GUI writes, worker reads
    std::atomic<bool> m_bAcceptSamples{false}; // GUI writes, streaming thread reads
    std::atomic<bool> m_bPresenting{false};    // worker writes, GUI reads
};
