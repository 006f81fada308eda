#ifndef CVSOA_TESTS_PROCESSWIDE_HPP
#define CVSOA_TESTS_PROCESSWIDE_HPP

#include <corvane/soa/common/MemoryManager.hpp>

#include <gtest/gtest.h>

// A memory manager stays installed for the life of the process. ctest runs every test in a
// process of its own; when one process runs them all, the tests that install a manager of
// their own after another one did are skipped rather than failed.
#define REQUIRE_NO_GLOBAL_MANAGER()                                              \
    if (::Corvane::Soa::Common::MemoryManager::getMemoryManager() != nullptr) {  \
        GTEST_SKIP() << "a memory manager is already installed in this process"; \
    }

#endif
