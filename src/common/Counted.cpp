#include <corvane/soa/common/Counted.hpp>

namespace Corvane::Soa::Common {

Counted::~Counted() = default;

void Counted::ref() noexcept { m_count.fetch_add(1, std::memory_order_relaxed); }

void Counted::unref() noexcept {
    // The holder whose decrement reaches zero deletes; acquire-release orders every other
    // holder's use of the object before the deletion.
    if (m_count.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete this;
    }
}

}  // namespace Corvane::Soa::Common
