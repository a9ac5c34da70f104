// The tool's JSON writer: any bytes in names come out as valid JSON that reads
// back to the same text, and misuse is caught instead of written.
#include "cli/JsonWriter.h"
#include "tests/cli/JsonReader.h"

#include <gtest/gtest.h>

#include <sstream>

namespace devid_test {
namespace {

using devid_cli::JsonWriter;

TEST(JsonWriter, OddCharactersAreEscapedAndReadBackUnchanged)
{
    const std::string tricky = std::string("quote\" back\\slash /\b\f\n\r\t ctl\x01\x1f end") + '\0' + "nul";
    const std::string utf8 = "caf\xc3\xa9 \xe2\x82\xac \xf0\x9f\x98\x80";
    std::ostringstream out;
    JsonWriter json(out);
    json.beginObject().field(tricky, tricky).field("utf8", utf8).field("n", -42).field("big", 4294967295u);
    json.key("list").beginArray().value(true).null().hex(0xBEEF).endArray().endObject();
    ASSERT_TRUE(json.done());
    const Json doc = JsonReader::Parse(out.str());
    EXPECT_EQ(doc[tricky].text, tricky);
    EXPECT_EQ(doc["utf8"].text, utf8);
    EXPECT_EQ(doc["n"].number, -42);
    EXPECT_EQ(doc["big"].number, 4294967295.0);
    EXPECT_TRUE(doc["list"][0].boolean);
    EXPECT_TRUE(doc["list"][1].isNull());
    EXPECT_EQ(doc["list"][2].text, "0x0000beef");

    // Malformed UTF-8 (a lone continuation byte, a truncated sequence, an
    // overlong form, a surrogate) is taken as Latin-1.
    const std::string quoted = JsonWriter::quote("a\x80" "b\xe2\x82" "c\xc0\xaf" "d\xed\xa0\x80");
    EXPECT_EQ(quoted, "\"a\\u0080b\\u00e2\\u0082c\\u00c0\\u00afd\\u00ed\\u00a0\\u0080\"");
    EXPECT_EQ(JsonReader::Parse(quoted).text, "a\xc2\x80" "b\xc3\xa2\xc2\x82" "c\xc3\x80\xc2\xaf" "d\xc3\xad\xc2\xa0\xc2\x80");
}

TEST(JsonWriter, MisuseThrowsInsteadOfWritingBadJson)
{
    std::ostringstream out;
    JsonWriter inArray(out);
    inArray.beginArray();
    EXPECT_THROW(inArray.key("k"), std::logic_error);
    EXPECT_THROW(inArray.endObject(), std::logic_error);
    JsonWriter inObject(out);
    inObject.beginObject();
    EXPECT_THROW(inObject.value("no key"), std::logic_error);
    inObject.key("k");
    EXPECT_THROW(inObject.key("again"), std::logic_error);
    JsonWriter twice(out);
    twice.value(1);
    EXPECT_THROW(twice.value(2), std::logic_error);
}

} // namespace
} // namespace devid_test
