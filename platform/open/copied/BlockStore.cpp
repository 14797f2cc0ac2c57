#include "platform/open/copied/BlockStore.h"

std::shared_ptr<PhysBlock> BlockStore::take()
{
    std::shared_ptr<PhysBlock> block;
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        if (!m_vecUnused.empty()) {
            block = m_vecUnused.back();
            m_vecUnused.pop_back();
        }
    }
    if (!block)
        block = PhysBlock::make(m_nBlockSize);
    if (!block)
        return nullptr;
    const auto comeBack = [weak = weak_from_this(), block](PhysBlock*) {
        if (const auto store = weak.lock()) {
            const std::lock_guard<std::mutex> lock(store->m_Mutex);
            store->m_vecUnused.push_back(block);
        }
    };
    return {block.get(), comeBack};
}
