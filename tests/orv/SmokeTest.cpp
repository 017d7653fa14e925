#include <gtest/gtest.h>
#include "orv/String.h"
#include "orv/SharedPtr.h"
TEST(Smoke, Builds) { orv::CString s("abc"); EXPECT_EQ(s.length(), 3u); }
