#include "app/CInterruptWatch.h"

#include <QSocketNotifier>

CInterruptWatch::CInterruptWatch(int descriptor, QObject* parent)
    : QObject(parent), m_pNotifier(new QSocketNotifier(descriptor, QSocketNotifier::Read, this))
{
    connect(m_pNotifier, SIGNAL(activated(int)), this, SLOT(slotReadable()));
}

void CInterruptWatch::slotReadable()
{
    m_pNotifier->setEnabled(false);
    emit sgInterrupted();
}
