#include "devid/model/TextArena.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Mora::Lux::Trace::TextArena;

TEST(TextArena, CopiesStayInPlaceAcrossBlockLimits)
{
    TextArena arena;
    const std::size_t block = TextArena::kBlockSize;
    EXPECT_STREQ("", arena.Copy(nullptr));
    // Texts that fill a block exactly (NUL included), miss it by one, or pass it by one.
    std::vector<std::string> texts{"first", std::string(block - 1, 'a'), std::string(block - 2, 'b'), "x",
                                   std::string(block, 'c'), std::string(3 * block, 'd'), "last"};
    std::vector<const char*> copies;
    for (const std::string& text : texts)
        copies.push_back(arena.Copy(text.c_str()));
    for (std::size_t i = 0; i < texts.size(); ++i) {
        EXPECT_EQ(texts[i], copies[i]) << i;
        EXPECT_NE(texts[i].c_str(), copies[i]);
    }
    arena.Clear();
    EXPECT_STREQ("again", arena.Copy("again"));
}
