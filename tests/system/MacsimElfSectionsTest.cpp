#include <cstdint>
#include <random>

#include <gtest/gtest.h>

#include "launchd/ElfSections.h"
#include "support/WholeFile.h"

namespace {

using Simulator::elfSection;
using Simulator::kInfoPlistSection;
using Simulator::kLaunchdPlistSection;

std::string helper() {
    return TestSupport::contentsOf(SENTREL_FIXTURES "/macsim_helper");
}

TEST(MacsimElfSections, FindsBothEmbeddedPropertyLists) {
    const std::string file = helper();
    const auto info = elfSection(file, kInfoPlistSection);
    const auto launchd = elfSection(file, kLaunchdPlistSection);
    ASSERT_TRUE(info && launchd);
    EXPECT_TRUE(info->starts_with("<?xml"));
    EXPECT_NE(info->find("SMAuthorizedClients"), std::string_view::npos);
    EXPECT_NE(launchd->find("MachServices"), std::string_view::npos);
}

TEST(MacsimElfSections, FindsNothingUnderAnotherName) {
    const std::string file = helper();
    EXPECT_FALSE(elfSection(file, "__TEXT,__info"));
    EXPECT_FALSE(elfSection(file, "__info_plist_"));
}

TEST(MacsimElfSections, FindsNothingInOtherFiles) {
    EXPECT_FALSE(elfSection("", kInfoPlistSection));
    EXPECT_FALSE(elfSection("#!/bin/sh\n", kInfoPlistSection));
    EXPECT_FALSE(elfSection(std::string(4096, '\0'), kInfoPlistSection));
}

TEST(MacsimElfSections, StaysInsideEveryTruncatedFile) {
    const std::string file = helper();
    for (std::size_t length = 0; length < file.size(); length += 97) {
        const std::string part = file.substr(0, length);
        const auto found = elfSection(part, kInfoPlistSection);
        EXPECT_TRUE(!found ||
                    (found->data() >= part.data() && found->data() + found->size() <= part.data() + length));
    }
}

TEST(MacsimElfSections, StaysInsideAFileWithHostileHeaders) {
    const std::string original = helper();
    std::mt19937 random(7);
    for (int round = 0; round < 3000; ++round) {
        std::string file = original;
        for (int change = 0; change < 4; ++change) {
            // The file's header, or the section headers at its end.
            const bool atEnd = random() % 2 == 0;
            const std::size_t range = atEnd ? 40 * 64 : 64;
            const std::size_t place = random() % range;
            file[atEnd ? file.size() - 1 - place : place] =
                static_cast<char>(random() % 2 == 0 ? 0xff : random());
        }
        const auto found = elfSection(file, kInfoPlistSection);
        EXPECT_TRUE(!found || (found->data() >= file.data() &&
                               found->data() + found->size() <= file.data() + file.size()));
    }
}

}  // namespace
