/*
 * gtest_main.cpp - the main of every test program: GoogleTest's, except that a run in which
 * no test was selected fails. ctest starts each test by name; a name that matches nothing
 * (a parameterised test whose name changed between listing and run) would otherwise run no
 * test at all and still pass.
 */
#include <gtest/gtest.h>

#include <cstdio>

int main(int argc, char **argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    const int iResult = RUN_ALL_TESTS();
    const bool bListing = ::testing::GTEST_FLAG(list_tests);
    if (iResult == 0 && !bListing && ::testing::UnitTest::GetInstance()->test_to_run_count() == 0) {
        std::fprintf(stderr, "no test was selected: the filter \"%s\" names no test of this program\n",
                     ::testing::GTEST_FLAG(filter).c_str());
        return 1;
    }
    return iResult;
}
