#include "host/application.h"

#include <gtest/gtest.h>

namespace vistel {
namespace {

TEST(Application, HasTheNameThatWasRegisteredLast) {
    const Tstring before = applicationName();
    setApplicationName("first");
    setApplicationName("second");
    EXPECT_EQ(applicationName(), Tstring("second"));
    setApplicationName(before);
}

}  // namespace
}  // namespace vistel
