// The five functions of the link, for the one endpoint of the process.
#include "platform/open/commif/CommEndpoint.h"

namespace {

std::atomic<unsigned> s_nLastError{0};

CommEndpoint& theEndpoint()
{
    static CommEndpoint endpoint;
    return endpoint;
}

int report(CommError error)
{
    if (error == CommError::None)
        return 0;
    s_nLastError = static_cast<unsigned>(error);
    return -1;
}

} // namespace

int KvrComm_Init(int endpoint, KvrCommCallback callback, void* context)
{
    return report(theEndpoint().open(endpoint, callback, context));
}

void KvrComm_Exit()
{
    theEndpoint().close();
}

int KvrComm_IsReady()
{
    return theEndpoint().isReady() ? 1 : 0;
}

int KvrComm_SendMsg(int endpoint, const void* data, unsigned int length)
{
    return report(theEndpoint().send(endpoint, data, length));
}

unsigned int KvrComm_GetInnerErrorCode()
{
    return s_nLastError;
}
