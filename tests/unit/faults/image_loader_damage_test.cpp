// A file of every form, cut at every byte and bent at every bit of its headers: every load ends in
// a listed code, takes little memory, gives it all back and prints nothing but the report.

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <vector>

#include "faults/fault_points.h"
#include "faults/one_file.h"
#include "host/byte_order.h"
#include "iff/plane_pool.h"

namespace vistel {
namespace {

using test::Bytes;
using test::everyWay;
using test::OneFile;
using test::Way;

constexpr size_t megabyte = size_t{1} << 20;

// What one load came to. Nothing is expected of it while standard output is captured: the message
// would be lost.
struct DamageOutcome {
    int code = iffOk;
    int forms = 0;
    std::string complaint;  // what is wrong whatever the file holds
};

DamageOutcome loadOutcome(OneFile& file, const Way& way) {
    const test::AllocationCount count;
    DamageOutcome outcome;
    outcome.code = loadAs(file, way);
    outcome.forms = file.forms;
    emptyPlanePool();
    std::string& complaint = outcome.complaint;
    if (!test::listed(outcome.code) || !file.errorsListed) complaint += " an unlisted code";
    if (count.blocks() > 0) complaint += " memory is lost";
    if (count.reservations() > 0) complaint += " pages are lost";
    if (count.requestedBytes() > 4 * megabyte) complaint += " too much memory";
    if (count.peakPages() > 300 * megabyte) complaint += " too many pages";
    return outcome;
}

class BrokenForms : public testing::Test {
 protected:
    void SetUp() override {
        file_.write(whole_);
        testing::internal::CaptureStdout();
        for (const Way& way : everyWay) loadAs(file_, way);  // what is made once is made
        testing::internal::GetCapturedStdout();
    }
    std::string report(const Way& way) {
        testing::internal::CaptureStdout();
        const DamageOutcome outcome = loadOutcome(file_, way);
        std::fflush(stdout);
        const std::string text = testing::internal::GetCapturedStdout();
        code_ = outcome.code;
        forms_ = outcome.forms;
        EXPECT_EQ(outcome.complaint, "") << way.name << " code " << code_;
        return text;
    }
    const Bytes whole_ = test::everyForm();
    OneFile file_;
    int code_ = iffOk, forms_ = 0;
};

TEST_F(BrokenForms, AreWholeToBeginWith) {
    for (const Way& way : everyWay) {
        report(way);
        EXPECT_EQ(code_, iffOk) << way.name;
        EXPECT_EQ(forms_, way.wantedForm ? 1 : test::imagesOfEveryForm) << way.name;
    }
}

TEST_F(BrokenForms, ReservedGroupsAreRefused) {
    for (const char* id : {"PATH", "INCL"}) {
        file_.write(test::everyFormAnd(id));
        for (const Way& way : everyWay) {
            report(way);
            EXPECT_EQ(code_, way.wantedForm ? iffOk : iffNotImplemented) << id << way.name;
        }
    }
}

// Many loads with the output thrown away, until one is wrong.
class Sweep {
 public:
    Sweep() {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
    }
    ~Sweep() {
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(problem_, "");
    }
    Sweep(const Sweep&) = delete;
    Sweep& operator=(const Sweep&) = delete;
    bool clean() const { return problem_.empty(); }

    void load(OneFile& file, const Way& way, const std::string& what,
              bool (*wrong)(int code) = nullptr) {
        const DamageOutcome outcome = loadOutcome(file, way);
        const bool wrongCode = wrong && wrong(outcome.code);
        if (outcome.complaint.empty() && !wrongCode) return;
        problem_ = std::string(way.name) + ", " + what + ": code " + std::to_string(outcome.code) +
                   outcome.complaint;
    }

 private:
    std::string problem_;
};

// Where the root groups begin, and at last the end of the file.
std::vector<size_t> rootGroups(const Bytes& file) {
    std::vector<size_t> starts = {0, test::everyChunk().size()};
    for (const char* id : {"LIS4", "LIST", "LIS8"})
        starts.push_back(static_cast<size_t>(
            std::search(file.data.begin(), file.data.end(), id, id + 4) - file.data.begin()));
    starts.push_back(file.size() - test::openForm(0x80000000).size());
    starts.push_back(file.size());
    return starts;
}

// The lengths at which the file may be cut without harm: behind a root group, with or without its
// pad bytes, and up to three bytes later, which are no group.
std::set<size_t> harmlessCuts(const Bytes& file) {
    const std::vector<size_t> starts = rootGroups(file);
    std::set<size_t> cuts;
    for (size_t i = 1; i < starts.size(); ++i) {
        const uint8_t* size = &file.data[starts[i - 1] + 4];
        const bool known = size[0] < 0x80;
        const size_t padAtMost = known ? 7 : 0;
        const size_t end = known ? starts[i - 1] + 8 + readBig16(size + 2) : starts[i];
        EXPECT_LE(end, starts[i]);
        EXPECT_GE(end + padAtMost, starts[i]);
        cuts.insert(end);
        for (size_t cut = starts[i]; cut < starts[i] + 4; ++cut) cuts.insert(cut);
    }
    return cuts;
}

TEST_F(BrokenForms, CutAtEveryByteReportWhatComesBeforeTheCut) {
    for (const Way& way : {everyWay[0], everyWay[1]}) {
        const std::string whole = report(way);
        for (size_t length = 0; length < whole_.size() && !HasFailure(); ++length) {
            file_.write(whole_.cut(length));
            const std::string got = report(way);
            // All but the last line is what the whole file says too.
            const size_t lastLine = got.size() < 2 ? 0 : got.rfind('\n', got.size() - 2) + 1;
            EXPECT_EQ(got.substr(0, lastLine), whole.substr(0, lastLine))
                << way.name << " cut at " << length;
        }
        file_.write(whole_);
    }
}

TEST_F(BrokenForms, CutAtEveryByteEndInAListedCode) {
    const std::set<size_t> harmless = harmlessCuts(whole_);
    Sweep sweep;
    for (size_t length = 0; length < whole_.size() && sweep.clean(); ++length) {
        file_.write(whole_.cut(length));
        for (const Way& way : everyWay) {
            const auto wrong = way.wantedForm              ? nullptr
                               : harmless.contains(length) ? [](int code) { return code != iffOk; }
                                                           : [](int code) { return code == iffOk; };
            sweep.load(file_, way, "cut at " + std::to_string(length), wrong);
        }
    }
}

// The bytes of all chunk headers, group types, image headers, tile rectangles and sound formats:
// what stands behind each identifier that the file knows.
std::set<size_t> headerBytes(const Bytes& file) {
    const std::pair<const char*, size_t> ids[] = {
        {"FOR", 12},  {"CAT", 12},  {"LIS", 12},  {"PRO", 12}, {"TBHD", 32}, {"RGB", 16},
        {"ZBUF", 16}, {"ABUF", 16}, {"COMM", 31}, {"SSND", 8}, {"ZPLC", 8},  {"ICON", 12},
        {"USER", 8},  {"NAME", 8},  {"DATE", 8},  {"AUTH", 8}, {"ANNO", 8},  {"VERS", 8},
        {"HIST", 8},  {"(c) ", 8},  {"ABCD", 8},  {"GEND", 8}, {"EOVC", 8},
    };
    std::set<size_t> bytes;
    for (const auto& [id, count] : ids) {
        const std::string_view text(id);
        for (auto at = file.data.begin();;) {
            at = std::search(at, file.data.end(), text.begin(), text.end());
            if (at == file.data.end()) break;
            const auto start = static_cast<size_t>(at - file.data.begin());
            for (size_t i = start; i < std::min(start + count, file.size()); ++i) bytes.insert(i);
            ++at;
        }
    }
    return bytes;
}

void bendEach(OneFile& file, const Bytes& whole, std::initializer_list<unsigned> flips,
              const Way& way) {
    Sweep sweep;
    for (const size_t at : headerBytes(whole))
        for (const unsigned flip : flips) {
            if (!sweep.clean()) return;
            Bytes bent = whole;
            bent.data[at] ^= static_cast<uint8_t>(flip);
            file.write(bent);
            sweep.load(file, way, "byte " + std::to_string(at) + " flip " + std::to_string(flip));
        }
}

TEST_F(BrokenForms, BentAtEveryBitOfTheirHeadersEndInAListedCode) {
    ASSERT_GT(headerBytes(whole_).size(), 900u);
    bendEach(file_, whole_, {1, 2, 4, 8, 16, 32, 64, 128}, everyWay[0]);
}

TEST_F(BrokenForms, BentAtEveryByteOfTheirHeadersEndInAListedCodeHoweverTheyAreRead) {
    for (const Way& way : everyWay) bendEach(file_, whole_, {0x80, 0xFF}, way);
}

}  // namespace
}  // namespace vistel
