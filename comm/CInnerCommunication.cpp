#include "comm/CInnerCommunication.h"

#include "platform/libcommif.h"

#include <QDebug>
#include <QTimer>

#include <cstring>

namespace {

constexpr int kEndpoint = 1;
constexpr int kRetryMs = 1000;

constexpr uint16_t kAppSwitchType = 1;
constexpr uint16_t kAppSwitchTag = 1;
constexpr uint32_t kAppSwitchValue = 8;
constexpr uint16_t kAppStateTag = 2;
constexpr uint32_t kAppStateValue = 1;
constexpr size_t kMessageBytes = 1024;

constexpr uint16_t kRequestType = 2;
constexpr uint16_t kRequestTag = 3;
constexpr uint32_t kExitMask = 0x8;
constexpr uint16_t kNoType = 0xFFFF;

// Items have no padding between them, so the value may be unaligned.
bool asksForExit(const void* value)
{
    uint32_t request = 0;
    std::memcpy(&request, value, sizeof request);
    return (request & kExitMask) != 0;
}

} // namespace

int CInnerCommunication::s_nInitFailReports = 5;

CInnerCommunication::CInnerCommunication() : m_pReInitTimer(new QTimer(this))
{
    m_pReInitTimer->setInterval(kRetryMs);
    connect(m_pReInitTimer, SIGNAL(timeout()), this, SLOT(slotReInitInnerComm()));
}

CInnerCommunication::~CInnerCommunication()
{
    delete m_pReInitTimer; // which stops it
}

void CInnerCommunication::initInnerComm()
{
    if (KvrComm_Init(kEndpoint, msg_process_cb, this) == 0)
        setUp();
    else
        retryLater();
}

void CInnerCommunication::setUp()
{
    qDebug("inner communication init success.");
    m_bInited = true;
    m_pReInitTimer->stop();
}

void CInnerCommunication::retryLater()
{
    if (s_nInitFailReports != 0) {
        qDebug("inner communication init failed. errno=%u.", KvrComm_GetInnerErrorCode());
        --s_nInitFailReports;
    }
    m_bInited = false;
    if (!m_pReInitTimer->isActive())
        m_pReInitTimer->start();
}

void CInnerCommunication::exitInnerComm()
{
    if (!m_bInited)
        return;
    KvrComm_Exit();
    qDebug("inner communication exit successfully.");
}

void CInnerCommunication::slotReInitInnerComm()
{
    initInnerComm();
}

void CInnerCommunication::slotAppSwitch()
{
    unsigned char message[kMessageBytes];
    TlvPacket packet;
    TlvPacket_Init(&packet, message, sizeof message);
    TlvPacket_WriteHead(&packet, kAppSwitchType);
    TlvPacket_WriteBody_U4B(&packet, kAppSwitchTag, kAppSwitchValue);
    TlvPacket_WriteBody_U4B(&packet, kAppStateTag, kAppStateValue);
    if (KvrComm_IsReady() != 0)
        KvrComm_SendMsg(kEndpoint, message, packet.length);
}

void CInnerCommunication::msg_process_cb(void* context, void* data, unsigned int length)
{
    static_cast<CInnerCommunication*>(context)->processMsg(data, length);
}

void CInnerCommunication::processMsg(void* data, unsigned int length)
{
    TlvPacket packet;
    TlvPacket_Init(&packet, data, length);
    uint16_t type = kNoType;
    if (TlvPacket_ReadHead(&packet, &type) == 0)
        qDebug("TlvPacket_ReadHead error.");
    if (type != kRequestType)
        return;
    uint16_t tag = 0;
    uint16_t size = 0;
    while (const void* value = TlvPacket_ReadBody(&packet, &tag, &size)) {
        if (tag != kRequestTag)
            continue;
        if (size != sizeof(uint32_t))
            return;
        if (asksForExit(value))
            emit sgAppExit();
    }
}
