#include "app/CPageMain.h"
#include "app/CServiceWatch.h"
#include "app/CommandLine.h"
#include "app/DisplaySettings.h"
#include "app/HeapSettings.h"
#include "app/ResourceCheck.h"
#include "app/SignalHandler.h"
#include "common/PositionConfig.h"
#include "common/globals.h"

#include <QApplication>
#include <QSocketNotifier>

#include <cstdlib>

#include <sysexits.h>

namespace {

// Runs the event loop and deletes the page manager after it, while the application still exists.
int runPageManager(QApplication& app)
{
    g_pPageMain = new CPageMain(nullptr);
    QObject::connect(g_pPageMain, SIGNAL(sgAppExit()), &app, SLOT(quit()));
    const QSocketNotifier interrupts(interruptDescriptor(), QSocketNotifier::Read);
    QObject::connect(&interrupts, SIGNAL(activated(int)), g_pPageMain, SLOT(slotExitApp()));
    const CServiceWatch serviceWatch;
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
    keepHeapSmall();
    if (!hasEnoughResources())
        return EX_OSERR;
    ignoreScreenDensity();
    QApplication app(argc, argv);
    readCommandLine(argc, argv);
    if (!installSignalHandlers())
        return EXIT_FAILURE;
    setUpDisplay();
    readPositionConfig();
    setDefaultSurfaceFormat();
    if (!canDrawWithOpenGl())
        return EX_UNAVAILABLE;
    return runPageManager(app);
}
