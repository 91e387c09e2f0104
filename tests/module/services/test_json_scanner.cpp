/*
 * The substring scanner that picks a string out of the endpoint message's embedded JSON:
 * it is not a JSON parser, and each of its rules is exercised here on its own.
 */
#include <gmock/gmock.h>

#include <cstring>
#include <memory>
#include <string>

#include "services_test.h"

namespace {

const size_t FIELD_SIZE = 16;

/* A 16-byte field followed by guard bytes, pre-filled so that every written byte shows. */
struct Destination {
    char acField[FIELD_SIZE];
    char acGuard[8];
};

class JsonScannerTest : public ModuleTest {
protected:
    /* Runs the scanner on a heap copy of exactly the text's size (so that a read past its
     * terminator is caught by the address sanitizer) and returns the field's 16 bytes. */
    std::string Scan(const char *pcKey, const std::string &strJson, char cFill = '#')
    {
        std::unique_ptr<char[]> pcJson(new char[strJson.size() + 1]);
        std::memcpy(pcJson.get(), strJson.c_str(), strJson.size() + 1);
        Destination stDst;
        std::memset(&stDst, cFill, sizeof(stDst));

        XmlGetStringValueByKeyFromJson(pcKey, pcJson.get(), stDst.acField, FIELD_SIZE);

        EXPECT_EQ(std::string(stDst.acGuard, sizeof(stDst.acGuard)), std::string(sizeof(stDst.acGuard), cFill))
            << "nothing is written past the destination's size";
        EXPECT_EQ(std::string(pcJson.get()), strJson) << "the text is not modified";
        EXPECT_THAT(m_traces.Texts(), ::testing::IsEmpty());
        return std::string(stDst.acField, FIELD_SIZE);
    }
    /* The field after the scan when the scanner wrote value and nothing else. */
    static std::string Written(const std::string &strValue, char cFill = '#')
    {
        return strValue + std::string(FIELD_SIZE - strValue.size(), cFill);
    }
    static std::string Untouched(char cFill = '#') { return std::string(FIELD_SIZE, cFill); }
};

TEST_F(JsonScannerTest, CopiesTheQuotedValueOfEachKey)
{
    const std::string strJson = "{\"Uri\":\"sip:a@b\",\"RegPassword\":\"pw\",\"RegIpAddress\":\"10.0.0.1\"}";
    EXPECT_EQ(Scan("Uri", strJson), Written("sip:a@b"));
    EXPECT_EQ(Scan("RegPassword", strJson), Written("pw"));
    EXPECT_EQ(Scan("RegIpAddress", strJson), Written("10.0.0.1"));
}

TEST_F(JsonScannerTest, WritesNoTerminator)
{
    const std::string strField = Scan("Uri", "{\"Uri\":\"abc\"}");
    EXPECT_EQ(strField, "abc#############");
}

TEST_F(JsonScannerTest, EmptyValueWritesNothing)
{
    EXPECT_EQ(Scan("Uri", "{\"Uri\":\"\",\"X\":\"y\"}"), Untouched());
}

TEST_F(JsonScannerTest, AbsentKeyLeavesTheDestinationUntouched)
{
    EXPECT_EQ(Scan("Uri", "{\"Url\":\"x\"}"), Untouched());
    EXPECT_EQ(Scan("Uri", ""), Untouched());
    EXPECT_EQ(Scan("uri", "{\"Uri\":\"x\"}"), Untouched()) << "the key is matched case-sensitively";
}

TEST_F(JsonScannerTest, BareKeyIsMatchedInsideAnEarlierMemberName)
{
    EXPECT_EQ(Scan("Uri", "{\"ProxyUri\":\"first\",\"Uri\":\"second\"}"), Written("first"));
}

TEST_F(JsonScannerTest, BareKeyIsMatchedInsideAnEarlierValue)
{
    /* "Uri" first occurs as a value: the start lands after its closing quote and comma, and
     * the next quoted text is the key "Uri" itself. */
    EXPECT_EQ(Scan("Uri", "{\"Name\":\"Uri\",\"Uri\":\"u\"}"), Written("Uri"));
}

TEST_F(JsonScannerTest, TheTwoBytesAfterTheKeyAreSkippedUnseen)
{
    /* Expected there: the key's closing quote and the colon. An unquoted key followed by
     * ':"' loses the value's opening quote, so the value's closing quote opens nothing. */
    EXPECT_EQ(Scan("Uri", "{Uri:\"v\"}"), Untouched());
    EXPECT_EQ(Scan("Uri", "{\"Uri\"xy\"v\"}"), Written("v")) << "the skipped bytes are not checked";
}

TEST_F(JsonScannerTest, BlankBetweenKeyAndColonMovesTheStartOntoTheColon)
{
    /* The start then lies on the blank's successor instead of after the colon; the quote
     * search from there still reaches the value. */
    EXPECT_EQ(Scan("Uri", "{\"Uri\" :\"v\",\"X\":\"y\"}"), Written("v"));
    EXPECT_EQ(Scan("Uri", "{\"Uri\"  :  \"v\"}"), Written("v"));
}

TEST_F(JsonScannerTest, BlankBeforeTheValuesQuoteIsHarmless)
{
    EXPECT_EQ(Scan("Uri", "{\"Uri\": \"v\",\"X\":\"y\"}"), Written("v"));
    EXPECT_EQ(Scan("Uri", "{\"Uri\":\t\r\n  \"v\"}"), Written("v"));
}

TEST_F(JsonScannerTest, ValueHoldingACommaIsNotTaken)
{
    EXPECT_EQ(Scan("Uri", "{\"Uri\":\"a,b\",\"X\":\"y\"}"), Untouched());
    EXPECT_EQ(Scan("Uri", "{\"X\":\"y\",\"Uri\":\"a,b\"}"), Untouched()) << "also as the last member";
}

TEST_F(JsonScannerTest, LastMemberIsTaken)
{
    EXPECT_EQ(Scan("Uri", "{\"X\":\"y\",\"Uri\":\"last\"}"), Written("last"));
    EXPECT_EQ(Scan("Uri", "{\"Uri\":\"only\"}"), Written("only"));
}

TEST_F(JsonScannerTest, NonStringValueBeforeACommaIsNotTaken)
{
    for (const char *pcValue : {"5", "true", "null", "-1.5e3"}) {
        EXPECT_EQ(Scan("Uri", std::string("{\"Uri\":") + pcValue + ",\"X\":\"y\"}"), Untouched()) << pcValue;
    }
}

TEST_F(JsonScannerTest, NonStringLastValueWithoutFurtherQuotesIsNotTaken)
{
    for (const char *pcValue : {"5", "true", "null"}) {
        EXPECT_EQ(Scan("Uri", std::string("{\"X\":\"y\",\"Uri\":") + pcValue + "}"), Untouched()) << pcValue;
    }
}

TEST_F(JsonScannerTest, WithoutAFollowingCommaTheNextQuotedTextIsTaken)
{
    /* No comma after the start: any quoted text counts, even a nested member's name. */
    EXPECT_EQ(Scan("Uri", "{\"X\":\"y\",\"Uri\":{\"B\":\"c\"}}"), Written("B"));
    EXPECT_EQ(Scan("Uri", "{\"Uri\":7} \"tail\""), Written("tail"));
}

TEST_F(JsonScannerTest, ArrayValueYieldsItsFirstStringWhenItEndsBeforeAComma)
{
    EXPECT_EQ(Scan("Uri", "{\"Uri\":[\"a\",\"b\"]}"), Written("a"));
}

TEST_F(JsonScannerTest, ValueWithoutClosingQuoteIsNotTaken)
{
    EXPECT_EQ(Scan("Uri", "{\"Uri\":\"abc"), Untouched());
}

TEST_F(JsonScannerTest, EscapesAreNotDecoded)
{
    EXPECT_EQ(Scan("Uri", "{\"Uri\":\"sip:\\/\\/x\"}"), Written("sip:\\/\\/x"));
    EXPECT_EQ(Scan("Uri", "{\"Uri\":\"\\u0041\"}"), Written("\\u0041"));
    EXPECT_EQ(Scan("Uri", "{\"Uri\":\"a\\\"b\"}"), Written("a\\")) << "an escaped quote ends the value";
}

TEST_F(JsonScannerTest, FifteenCharacterAddressKeepsTheByteAfterIt)
{
    EXPECT_EQ(Scan("RegIpAddress", "{\"RegIpAddress\":\"192.168.100.200\"}"), "192.168.100.200#");
    EXPECT_EQ(Scan("RegIpAddress", "{\"RegIpAddress\":\"192.168.100.200\"}", '\0'),
              std::string("192.168.100.200\0", 16))
        << "a cleared field supplies the terminator";
}

TEST_F(JsonScannerTest, SixteenCharacterAddressFillsTheWholeField)
{
    EXPECT_EQ(Scan("RegIpAddress", "{\"RegIpAddress\":\"192.168.100.2001\"}"), "192.168.100.2001");
}

TEST_F(JsonScannerTest, SeventeenCharacterAddressIsNotCopied)
{
    EXPECT_EQ(Scan("RegIpAddress", "{\"RegIpAddress\":\"192.168.100.20012\"}", '\0'), std::string(FIELD_SIZE, '\0'));
    const std::string strField = Scan("RegIpAddress", "{\"RegIpAddress\":\"192.168.100.20012\"}");
    EXPECT_EQ(strField[0], '\0') << "a failed copy leaves no text";
    EXPECT_EQ(strField.find("192"), std::string::npos);
}

TEST_F(JsonScannerTest, KeyAtTheEndOfTheTextReadsNothingBeyondIt)
{
    EXPECT_EQ(Scan("Uri", "{\"X\":\"y\"}Uri"), Untouched());
    EXPECT_EQ(Scan("Uri", "{\"X\":\"y\"}Uri\""), Untouched());
    EXPECT_EQ(Scan("Uri", "Uri"), Untouched());
    EXPECT_EQ(Scan("Uri", "\"Uri\":"), Untouched());
}

} // namespace
