// GoogleTest's main, but for one thing: a filter that names no test fails, where GoogleTest would
// say that all of none have passed.
#include <gtest/gtest.h>

#include <cstdio>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const int failed = RUN_ALL_TESTS();
    const bool listed = GTEST_FLAG_GET(list_tests);
    if (listed || testing::UnitTest::GetInstance()->test_to_run_count() > 0) return failed;
    std::fprintf(stderr, "FAILED: no test has the name that was asked for\n");
    return 1;
}
