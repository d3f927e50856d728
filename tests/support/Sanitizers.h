// Skips tests of what sanitizers change.
#pragma once

#include <gtest/gtest.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define SKIP_UNDER_SANITIZERS(reason) GTEST_SKIP() << (reason)
#else
#define SKIP_UNDER_SANITIZERS(reason)
#endif
