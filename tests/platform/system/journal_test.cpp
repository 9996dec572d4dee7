#include "platform/system/journal.h"

#include <gtest/gtest.h>

namespace plat {
namespace {

TEST(JournalTest, MarksSelectWhatCameAfter) {
    Journal journal;
    journal.log("before");
    std::size_t mark = journal.size();
    journal.notification("com.example.n");
    journal.log("after");

    auto later = journal.since(mark);
    ASSERT_EQ(later.size(), 2u);
    EXPECT_EQ(later[0].kind, JournalEntry::Kind::Notification);
    EXPECT_EQ(later[0].name, "com.example.n");
    EXPECT_EQ(later[1].text, "after");
    EXPECT_TRUE(journal.since(1000).empty());
    journal.clear();
    EXPECT_TRUE(journal.since(mark).empty());
}

}  // namespace
}  // namespace plat
