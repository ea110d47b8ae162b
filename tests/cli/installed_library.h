#pragma once
// A suite over the embedded installation with its formula library loaded, for the tests that
// read the system set in place.

#include <gtest/gtest.h>

#include "host/installation.h"
#include "model/library.h"
#include "nyind_runner.h"

namespace nyind_test {

class InstalledLibrary : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        ASSERT_TRUE(ny::OpenInstallation(kInstall));
        g_MyInitIndicator();
    }
    static void TearDownTestSuite() {
        g_MyRemoveIndicators();
        ny::CloseInstallation();
    }
};

}  // namespace nyind_test
