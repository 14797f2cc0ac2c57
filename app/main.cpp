#include "app/CInterruptWatch.h"
#include "app/CPageMain.h"
#include "app/CommandLine.h"
#include "app/DisplaySettings.h"
#include "app/SignalHandler.h"
#include "app/common/PositionConfig.h"
#include "app/common/globals.h"

#include <QApplication>

#include <cstdlib>

#include <malloc.h>

namespace {

// Every playback starts threads anew, and each of them would keep heap memory in an arena of its
// own: over some fifty playbacks that adds up to 20 MB.
void keepOneHeap()
{
    mallopt(M_ARENA_MAX, 1);
}

// The page manager lives exactly as long as the event loop and its teardown.
int runPageManager(QApplication& app)
{
    g_pPageMain = new CPageMain(nullptr);
    QObject::connect(g_pPageMain, SIGNAL(sgAppExit()), &app, SLOT(quit()));
    const CInterruptWatch watch(interruptDescriptor());
    QObject::connect(&watch, SIGNAL(sgInterrupted()), g_pPageMain, SLOT(slotExitApp()));
    g_pPageMain->show();
    const int status = QApplication::exec();
    delete g_pPageMain;
    g_pPageMain = nullptr;
    return status;
}

} // namespace

int main(int argc, char** argv)
{
    holdInterrupts();
    keepOneHeap();
    QApplication app(argc, argv);
    readCommandLine(argc, argv);
    if (!installSignalHandlers())
        return EXIT_FAILURE;
    hidePointer();
    readScreenSize();
    loadApplicationFont();
    readPositionConfig();
    setDefaultSurfaceFormat();
    return runPageManager(app);
}
