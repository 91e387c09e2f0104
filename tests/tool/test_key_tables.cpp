/*
 * The module's key tables against the inspector's record descriptions: every row of every
 * table fills a field the description has, of the kind and capacity the description gives,
 * so a key row and the description of its field cannot drift apart.
 */
#include <gtest/gtest.h>

#include <string>

#include "atrium_frame.h"
#include "record_desc.h"

using namespace atrium_records;

namespace {

bool StoresText(AtriumStore eStore)
{
    return eStore == AtriumStore::Text || eStore == AtriumStore::CountedText || eStore == AtriumStore::Address;
}

/* The field (or entry of an array field) that starts exactly at uiOffset, or null. */
const FieldDesc *FieldStartingAt(const RecordDesc &stRecord, size_t uiOffset)
{
    for (const FieldDesc &stField : stRecord) {
        if (uiOffset < stField.uiOffset || uiOffset >= stField.uiOffset + FieldBytes(stField)) {
            continue;
        }
        return (uiOffset - stField.uiOffset) % stField.uiElemSize == 0 ? &stField : nullptr;
    }
    return nullptr;
}

std::string RowName(const AtriumKeyTable &stTable, const AtriumKey &stKey)
{
    const char *pcWhere = stKey.eSource == AtriumSource::JsonMember ? stKey.pcName : stKey.stPath.Text();
    return std::string(stTable.pcParser) + " " + pcWhere;
}

TEST(KeyTables, EveryRowFillsADescribedFieldOfItsKindAndCapacity)
{
    size_t uiRows = 0;
    for (const AtriumKeyTable &stTable : AtriumKeyTables()) {
        const RecordDesc *pstRecord = FindRecord(stTable.pcRecord);
        ASSERT_NE(pstRecord, nullptr) << stTable.pcParser << " fills " << stTable.pcRecord;
        ASSERT_GT(stTable.uiCount, 0u) << stTable.pcParser;
        for (const AtriumKey &stKey : stTable) {
            ++uiRows;
            const FieldDesc *pstField = FieldStartingAt(*pstRecord, stKey.uiOffset);
            ASSERT_NE(pstField, nullptr) << RowName(stTable, stKey) << ": no described field at offset "
                                         << stKey.uiOffset << " of " << stTable.pcRecord;
            if (StoresText(stKey.eStore)) {
                EXPECT_EQ(pstField->eKind, FieldKind::Text) << RowName(stTable, stKey) << " -> " << pstField->pcName;
                EXPECT_EQ(pstField->uiElemSize, stKey.uiCapacity) << RowName(stTable, stKey) << " -> "
                                                                  << pstField->pcName;
                continue;
            }
            const FieldKind eWanted = stKey.eStore == AtriumStore::StrToInt32 ? FieldKind::I32 : FieldKind::U32;
            EXPECT_EQ(pstField->eKind, eWanted) << RowName(stTable, stKey) << " -> " << pstField->pcName;
            EXPECT_EQ(stKey.uiCapacity, sizeof(uint32_t)) << RowName(stTable, stKey);
        }
    }
    /* every table is listed: the module reads 139 keys through tables (more as keys are added) */
    EXPECT_GE(uiRows, 139u);
}

TEST(KeyTables, ARowPointingInsideAFieldIsCaught)
{
    const RecordDesc *pstRecord = FindRecord("tagLOGIN_S_ACCESS_SERVER");
    ASSERT_NE(pstRecord, nullptr);
    const FieldDesc *pstSip = pstRecord->Find("acSipUri");
    ASSERT_NE(pstSip, nullptr);
    EXPECT_EQ(FieldStartingAt(*pstRecord, pstSip->uiOffset), pstSip);
    EXPECT_EQ(FieldStartingAt(*pstRecord, pstSip->uiOffset + 1), nullptr);
    const FieldDesc *pstMs = pstRecord->Find("aacMsUri");
    ASSERT_NE(pstMs, nullptr);
    EXPECT_EQ(FieldStartingAt(*pstRecord, pstMs->uiOffset + 7 * 256), pstMs) << "the eighth media server";
}

} // namespace
