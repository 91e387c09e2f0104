/*
 * Record descriptions: every described record is covered byte for byte by its rows (so a
 * field added to a header and not to its table is caught), nested descriptions match the
 * size of the member they describe, and every counter names a u32 row of the same record.
 */
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <string>

#include "record_desc.h"

using namespace atrium_records;

namespace {

size_t Alignment(const FieldDesc &stField)
{
    switch (stField.eKind) {
    case FieldKind::Text:
        return 1;
    case FieldKind::U32:
    case FieldKind::I32:
        return 4;
    case FieldKind::Pointer:
    case FieldKind::TextPointer:
        return alignof(void *);
    case FieldKind::Record:
        break;
    }
    /* a record is aligned like its most aligned field */
    size_t uiAlign = 1;
    for (const FieldDesc &stInner : *stField.pstRecord) {
        uiAlign = std::max(uiAlign, Alignment(stInner));
    }
    return uiAlign;
}

TEST(RecordDescTest, RowsCoverEveryByteOfEveryRecordInDeclarationOrder)
{
    for (const RecordDesc *pstDesc : AllRecords()) {
        SCOPED_TRACE(pstDesc->pcName);
        size_t uiEnd = 0;
        size_t uiAlign = 1;
        for (const FieldDesc &stField : *pstDesc) {
            SCOPED_TRACE(stField.pcName);
            const size_t uiFieldAlign = Alignment(stField);
            const size_t uiAligned = (uiEnd + uiFieldAlign - 1) / uiFieldAlign * uiFieldAlign;
            /* the next row starts where the previous ended, give or take alignment */
            EXPECT_EQ(stField.uiOffset, uiAligned);
            uiEnd = stField.uiOffset + FieldBytes(stField);
            uiAlign = std::max(uiAlign, uiFieldAlign);
        }
        EXPECT_EQ(pstDesc->uiSize, (uiEnd + uiAlign - 1) / uiAlign * uiAlign);
    }
}

TEST(RecordDescTest, NestedDescriptionsHaveTheSizeOfTheMemberTheyDescribe)
{
    for (const RecordDesc *pstDesc : AllRecords()) {
        for (const FieldDesc &stField : *pstDesc) {
            if (stField.eKind == FieldKind::Record || stField.eKind == FieldKind::Pointer) {
                EXPECT_EQ(stField.uiElemSize, stField.pstRecord->uiSize) << pstDesc->pcName << "." << stField.pcName;
            }
        }
    }
}

TEST(RecordDescTest, EveryCounterIsAU32RowOfTheSameRecord)
{
    size_t uiCounted = 0;
    for (const RecordDesc *pstDesc : AllRecords()) {
        for (const FieldDesc &stField : *pstDesc) {
            if (stField.pcCounter == nullptr) {
                continue;
            }
            ++uiCounted;
            const FieldDesc *pstCounter = pstDesc->Find(stField.pcCounter);
            ASSERT_NE(pstCounter, nullptr) << pstDesc->pcName << "." << stField.pcName;
            EXPECT_EQ(pstCounter->eKind, FieldKind::U32);
            EXPECT_EQ(pstCounter->uiCount, 0u);
            EXPECT_EQ(pstCounter->uiOffset, stField.uiCounterOffset);
        }
    }
    /* search results count two arrays each, EUA/STG/TMS/portal lists, unified-call rules,
     * linked phones twice, and three heap arrays */
    EXPECT_EQ(uiCounted, 15u);
}

TEST(RecordDescTest, EveryNestedRecordIsListedOnceAndFoundByName)
{
    std::set<std::string> setNames;
    for (const RecordDesc *pstDesc : AllRecords()) {
        EXPECT_TRUE(setNames.insert(pstDesc->pcName).second) << pstDesc->pcName;
        EXPECT_EQ(FindRecord(pstDesc->pcName), pstDesc);
        for (const FieldDesc &stField : *pstDesc) {
            if (stField.pstRecord != nullptr) {
                EXPECT_NE(std::find(AllRecords().begin(), AllRecords().end(), stField.pstRecord), AllRecords().end())
                    << stField.pstRecord->pcName;
            }
        }
    }
    EXPECT_EQ(FindRecord("tagNO_SUCH_RECORD"), nullptr);
}

TEST(RecordDescTest, RowsNameTheFieldsOfTheHeaders)
{
    const FieldDesc *pstSites = g_stAtriumUserInfoDesc.Find("pstSiteInfo");
    ASSERT_NE(pstSites, nullptr);
    EXPECT_EQ(pstSites->uiOffset, offsetof(tagLOGIN_S_ATRIUM_USER_INFO, pstSiteInfo));
    EXPECT_EQ(pstSites->eOwner, Owner::SiteRecord);

    const FieldDesc *pstDisplay = g_stAtriumUserInfoDesc.Find("acDisplayName");
    ASSERT_NE(pstDisplay, nullptr);
    EXPECT_EQ(pstDisplay->uiElemSize, 289u);

    const FieldDesc *pstEua = g_stTandemEuaDesc.Find("acAddress");
    ASSERT_NE(pstEua, nullptr);
    EXPECT_EQ(pstEua->uiCount, 18u);
    EXPECT_EQ(pstEua->uiElemSize, 256u);
    EXPECT_STREQ(pstEua->pcCounter, "uiAddressNum");

    EXPECT_EQ(g_stLinkedPhoneResultDesc.Find("astLinkedPhone")->uiCount, 29u);
    EXPECT_EQ(g_stAtriumUserInfoDesc.Find("astUmsInfo")->eFill, Fill::UntilEmpty);
    EXPECT_EQ(g_stAtriumUserInfoDesc.Find("no_such_field"), nullptr);
}

} // namespace
