#include "inspect/explain/Codes.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Inspect::blessingCode;
using Inspect::CodeMeaning;
using Inspect::kextCode;
using Inspect::launchctlStatus;

/// The codes of a range that mean something, and of those the ones that are normal.
template <class Meaning>
std::pair<std::vector<int>, std::vector<int>> knownOf(int from, int upTo, const Meaning& meaningOf) {
    std::pair<std::vector<int>, std::vector<int>> known;
    for (int code = from; code <= upTo; ++code) {
        if (const std::optional<CodeMeaning> meaning = meaningOf(code)) {
            known.first.push_back(code);
            if (meaning->isNormal) {
                known.second.push_back(code);
            }
            // What is normal needs no remedy, everything else has one.
            EXPECT_EQ(meaning->advice.empty(), meaning->isNormal) << code;
            EXPECT_FALSE(meaning->meaning.empty()) << code;
        }
    }
    return known;
}

using Known = std::pair<std::vector<int>, std::vector<int>>;

TEST(Codes, OfKernelExtensionsAreSignedAndHexadecimal) {
    EXPECT_EQ(kextCode("-23ff7ffa").value().name, "kOSKextReturnNotFound");
    EXPECT_EQ(kextCode("-23ff7ffa").value().meaning, "not loaded");
    EXPECT_EQ(kextCode("-23FF7FE8").value().meaning, "in use");
    for (const char* text : {"", "-", "x", "-23ff7ffax", " -23ff7ffa", "23ff7ffa", "6", "-23ff7ffd",
                             "-23ff7000", "-23ff6ffa", "-13ff7ffa", "dc008006", "-23ff7ffaa"}) {
        EXPECT_EQ(kextCode(text), std::nullopt) << text;
    }
}

TEST(Codes, OfKernelExtensionsAreKnown) {
    const auto meaningOf = [](int low) {
        std::string text;
        for (int number = 0x23ff8000 - low; number > 0; number /= 16) {
            text.insert(text.begin(), "0123456789abcdef"[number % 16]);
        }
        return kextCode('-' + text);
    };
    EXPECT_EQ(knownOf(0, 0xFFF, meaningOf), (Known{{1, 2, 4, 5, 6, 9, 14, 23, 24, 25, 27}, {6, 9}}));
}

TEST(Codes, OfLaunchctlAreKnown) {
    EXPECT_EQ(
        knownOf(-10, 300, &launchctlStatus),
        (Known{{1, 3, 5, 22, 36, 37, 64, 112, 113, 119, 122, 125, 134, 150}, {3, 112, 113, 119, 125, 134}}));
    EXPECT_EQ(launchctlStatus(5).value().name, "EIO");
    EXPECT_EQ(launchctlStatus(113).value().meaning, "the job is not loaded");
    EXPECT_EQ(launchctlStatus(1).value().advice, "Send the report to support.");
}

TEST(Codes, OfARefusedHelperAreKnown) {
    EXPECT_EQ(knownOf(-10, 300, &blessingCode), (Known{{2, 3, 4, 5, 6, 7, 8, 9, 10}, {}}));
    EXPECT_EQ(blessingCode(9).value().name, "kSMErrorJobMustBeEnabled");
    EXPECT_EQ(blessingCode(4).value().advice, "Run it as an administrator; with --silent, as root.");
}

}  // namespace
