// Allocations, pages, reads and seeks that fail while a file is loaded: the n-th one, for every n
// until nothing fails any more. Every load ends in a code that fits, gives everything back, and the
// next load is as good as ever.

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "faults/fault_points.h"
#include "faults/one_file.h"
#include "iff/plane_pool.h"

namespace vistel {
namespace {

using test::everyWay;
using test::FaultSpan;
using test::OneFile;
using test::Way;

struct Outcome {
    int code = iffOk;
    bool failed = false;  // the fault happened
    bool clean = true;    // everything was given back
};

Outcome loadWithFault(OneFile& file, const Way& way, unsigned kinds, int n, FaultSpan span) {
    emptyPlanePool();
    const test::AllocationCount count;
    Outcome outcome;
    testing::internal::CaptureStdout();
    {
        const test::Fault fault(kinds, n, span);
        outcome.code = loadAs(file, way);
        outcome.failed = fault.happened();
    }
    testing::internal::GetCapturedStdout();
    emptyPlanePool();
    outcome.clean = count.blocks() == 0 && count.reservations() == 0 && count.streams() == 0;
    return outcome;
}

class LoadingFaults : public testing::Test {
 protected:
    void SetUp() override {
        file_.write(test::everyForm());
        testing::internal::CaptureStdout();
        for (const Way& way : everyWay) loadAs(file_, way);  // what is made once is made
        testing::internal::GetCapturedStdout();
    }
    // Lets each call of these kinds fail in turn. How many there were.
    int failEach(unsigned kinds, const std::vector<int>& codes) {
        int most = 0;
        for (const Way& way : everyWay)
            for (const FaultSpan span : {FaultSpan::once, FaultSpan::fromThenOn}) {
                SCOPED_TRACE(testing::Message() << way.name << " span " << int(span));
                int n = 1;
                while (failOne(way, kinds, n, span, codes) && !HasFailure()) ++n;
                most = std::max(most, n - 1);
            }
        return most;
    }

 private:
    bool failOne(const Way& way, unsigned kinds, int n, FaultSpan span,
                 const std::vector<int>& codes) {
        const Outcome bad = loadWithFault(file_, way, kinds, n, span);
        EXPECT_TRUE(bad.clean) << "n " << n << " code " << bad.code;
        if (!bad.failed) {
            EXPECT_EQ(bad.code, iffOk);
            return false;
        }
        // What failed may be of no account, but then all is there.
        const int all = way.wantedForm ? 1 : test::imagesOfEveryForm;
        const bool fits = bad.code == iffOk
                              ? file_.forms == all
                              : std::find(codes.begin(), codes.end(), bad.code) != codes.end();
        EXPECT_TRUE(fits) << "n " << n << " code " << bad.code << " forms " << file_.forms;
        const Outcome good = loadWithFault(file_, way, 0, 0, FaultSpan::once);
        EXPECT_EQ(good.code, iffOk) << "n " << n;
        EXPECT_EQ(file_.forms, all);
        return true;
    }
    OneFile file_;
};

TEST_F(LoadingFaults, OfMemoryAreNoMemory) {
    EXPECT_GT(failEach(test::faultMemory, {iffNoMemory}), 20);
}

TEST_F(LoadingFaults, OfPagesAreNoMemory) {
    EXPECT_GT(failEach(test::faultPages, {iffNoMemory}), 10);
}

TEST_F(LoadingFaults, OfReadsAreAnIncompleteFileOrABrokenPipe) {
    EXPECT_GT(failEach(test::faultRead,
                       {iffIncomplete, iffPartialIo, iffBrokenPipe, iffNoEndMarker, iffIoError}),
              100);
}

TEST_F(LoadingFaults, OfSeeksAreAnIoError) {
    failEach(test::faultSeek, {iffIoError});
    // A chunk that is skipped by seeking.
    test::Bytes further;
    further.chunk("USER", test::Bytes().fill(600));
    OneFile gap;
    gap.write(
        test::imageForm(test::header(1, 1, 0), test::tile("RGBA", {0, 0, 0, 0}, "x"), further));
    Outcome outcome = loadWithFault(gap, everyWay[0], test::faultSeek, 1, FaultSpan::once);
    EXPECT_TRUE(outcome.failed && outcome.clean);
    EXPECT_EQ(outcome.code, iffIoError);
    outcome = loadWithFault(gap, everyWay[0], 0, 0, FaultSpan::once);
    EXPECT_EQ(outcome.code, iffOk);
}

}  // namespace
}  // namespace vistel
