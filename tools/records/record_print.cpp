/*
 * record_print.cpp - walks a record through its description: to JSON, to aligned text,
 * from JSON, and releasing what the module handed over.
 *
 * Every walk goes field by field; an array field is a run of elements of one kind, and
 * FilledEntries says how many of them hold data. Elements are read with memcpy from the
 * raw record bytes, so the walk never depends on the record's C type.
 */
#include "record_print.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace atrium_records {

namespace {

const unsigned char *At(const void *pvRecord, size_t uiOffset)
{
    return static_cast<const unsigned char *>(pvRecord) + uiOffset;
}

unsigned char *At(void *pvRecord, size_t uiOffset)
{
    return static_cast<unsigned char *>(pvRecord) + uiOffset;
}

template <typename T>
T Load(const unsigned char *pucAt)
{
    T value;
    std::memcpy(&value, pucAt, sizeof(value));
    return value;
}

template <typename T>
void Store(unsigned char *pucAt, T value)
{
    std::memcpy(pucAt, &value, sizeof(value));
}

/* Length of the valid UTF-8 sequence at pucText (at most uiLeft bytes), 0 when invalid. */
size_t Utf8SequenceLength(const unsigned char *pucText, size_t uiLeft)
{
    const unsigned char ucLead = pucText[0];
    size_t uiLen;
    unsigned char ucLow = 0x80;
    unsigned char ucHigh = 0xBF;
    if (ucLead < 0x80) {
        return 1;
    }
    if (ucLead >= 0xC2 && ucLead <= 0xDF) {
        uiLen = 2;
    } else if (ucLead >= 0xE0 && ucLead <= 0xEF) {
        uiLen = 3;
        ucLow = ucLead == 0xE0 ? 0xA0 : 0x80;  /* no overlong forms */
        ucHigh = ucLead == 0xED ? 0x9F : 0xBF; /* no surrogates */
    } else if (ucLead >= 0xF0 && ucLead <= 0xF4) {
        uiLen = 4;
        ucLow = ucLead == 0xF0 ? 0x90 : 0x80;
        ucHigh = ucLead == 0xF4 ? 0x8F : 0xBF;
    } else {
        return 0;
    }
    if (uiLeft < uiLen || pucText[1] < ucLow || pucText[1] > ucHigh) {
        return 0;
    }
    for (size_t i = 2; i < uiLen; ++i) {
        if (pucText[i] < 0x80 || pucText[i] > 0xBF) {
            return 0;
        }
    }
    return uiLen;
}

void AppendHexByte(std::string &strOut, unsigned char ucByte)
{
    char acHex[8];
    std::snprintf(acHex, sizeof(acHex), "\\x%02X", ucByte);
    strOut += acHex;
}

/* C-style escape of one ASCII byte for the quoted text form; false when none is needed. */
bool AppendQuotedEscape(std::string &strOut, unsigned char ucByte)
{
    switch (ucByte) {
    case '"':
        strOut += "\\\"";
        return true;
    case '\\':
        strOut += "\\\\";
        return true;
    case '\n':
        strOut += "\\n";
        return true;
    case '\r':
        strOut += "\\r";
        return true;
    case '\t':
        strOut += "\\t";
        return true;
    default:
        break;
    }
    if (ucByte < 0x20 || ucByte == 0x7F) {
        AppendHexByte(strOut, ucByte);
        return true;
    }
    return false;
}

bool IsEmptyElement(const FieldDesc &stField, const unsigned char *pucElem)
{
    if (stField.eKind == FieldKind::Text) {
        return pucElem[0] == '\0';
    }
    /* a record entry is empty when its first field, a text, is */
    const FieldDesc &stFirst = *stField.pstRecord->begin();
    return stFirst.eKind == FieldKind::Text && pucElem[stFirst.uiOffset] == '\0';
}

const void *LoadPointer(const FieldDesc &stField, const void *pvRecord)
{
    return Load<const void *>(At(pvRecord, stField.uiOffset));
}

/* The first element of a field: inside the record, or behind its pointer. */
const unsigned char *FirstElement(const FieldDesc &stField, const void *pvRecord)
{
    if (stField.eKind == FieldKind::Pointer) {
        return static_cast<const unsigned char *>(LoadPointer(stField, pvRecord));
    }
    return At(pvRecord, stField.uiOffset);
}

bool IsArray(const FieldDesc &stField)
{
    return stField.uiCount != 0 || (stField.eKind == FieldKind::Pointer && stField.pcCounter);
}

/* ---- secrets ----------------------------------------------------------------------- */

bool g_bSecretsShown = false;

/* The text of a char field, or its mask when it holds a secret that is not shown. */
std::string ShownText(const FieldDesc &stField, const unsigned char *pucElem, Escape eEscape)
{
    const char *pcText = reinterpret_cast<const char *>(pucElem);
    if (stField.bSecret && !g_bSecretsShown) {
        const size_t uiLen = strnlen(pcText, stField.uiElemSize);
        if (uiLen != 0) {
            const std::string strMask = "*** (" + std::to_string(uiLen) + (uiLen == 1 ? " byte)" : " bytes)");
            return strMask;
        }
    }
    return TextValue(pcText, stField.uiElemSize, eEscape);
}

/* ---- JSON -------------------------------------------------------------------------- */

Json::Value ElementToJson(const FieldDesc &stField, const unsigned char *pucElem)
{
    switch (stField.eKind) {
    case FieldKind::Text:
        return ShownText(stField, pucElem, Escape::Json);
    case FieldKind::U32:
        return Json::Value(static_cast<Json::UInt>(Load<uint32_t>(pucElem)));
    case FieldKind::I32:
        return Json::Value(static_cast<Json::Int>(Load<int32_t>(pucElem)));
    case FieldKind::Record:
    case FieldKind::Pointer:
        return RecordToJson(*stField.pstRecord, pucElem);
    case FieldKind::TextPointer:
        break;
    }
    return Json::Value();
}

Json::Value FieldToJson(const FieldDesc &stField, const void *pvRecord)
{
    if (stField.eKind == FieldKind::TextPointer) {
        const char *pcText = static_cast<const char *>(LoadPointer(stField, pvRecord));
        return pcText == nullptr ? Json::Value()
                                 : Json::Value(TextValue(pcText, std::strlen(pcText) + 1, Escape::Json));
    }
    const unsigned char *pucFirst = FirstElement(stField, pvRecord);
    if (pucFirst == nullptr) {
        return Json::Value();
    }
    if (!IsArray(stField)) {
        return ElementToJson(stField, pucFirst);
    }
    Json::Value jsArray(Json::arrayValue);
    const uint32_t uiFilled = FilledEntries(stField, pvRecord);
    for (uint32_t i = 0; i < uiFilled; ++i) {
        jsArray.append(ElementToJson(stField, pucFirst + i * stField.uiElemSize));
    }
    return jsArray;
}

/* ---- text -------------------------------------------------------------------------- */

void Indent(std::ostream &os, unsigned uiIndent)
{
    os << std::string(uiIndent, ' ');
}

void PrintScalar(std::ostream &os, const FieldDesc &stField, const unsigned char *pucElem)
{
    switch (stField.eKind) {
    case FieldKind::Text:
        os << ShownText(stField, pucElem, Escape::Quoted);
        break;
    case FieldKind::U32:
        os << Load<uint32_t>(pucElem);
        break;
    case FieldKind::I32:
        os << Load<int32_t>(pucElem);
        break;
    default:
        break;
    }
}

/* One element after its label; records go on the following lines. */
void PrintElement(std::ostream &os, const FieldDesc &stField, const unsigned char *pucElem, unsigned uiIndent)
{
    if (stField.eKind == FieldKind::Record || stField.eKind == FieldKind::Pointer) {
        os << stField.pstRecord->pcName << '\n';
        PrintRecordText(os, *stField.pstRecord, pucElem, uiIndent);
        return;
    }
    PrintScalar(os, stField, pucElem);
    os << '\n';
}

void PrintArray(std::ostream &os, const FieldDesc &stField, const void *pvRecord, unsigned uiIndent)
{
    const unsigned char *pucFirst = FirstElement(stField, pvRecord);
    const uint32_t uiFilled = FilledEntries(stField, pvRecord);
    const bool bSparse = stField.eFill == Fill::All && stField.uiCount != 0;
    uint32_t uiShown = 0;
    for (uint32_t i = 0; i < uiFilled; ++i) {
        uiShown += bSparse && IsEmptyElement(stField, pucFirst + i * stField.uiElemSize) ? 0 : 1;
    }
    if (stField.uiCount == 0) {
        os << uiFilled << (uiFilled == 1 ? " entry\n" : " entries\n");
    } else {
        os << uiShown << " of " << stField.uiCount << (bSparse ? " set\n" : "\n");
    }
    for (uint32_t i = 0; i < uiFilled; ++i) {
        const unsigned char *pucElem = pucFirst + i * stField.uiElemSize;
        if (bSparse && IsEmptyElement(stField, pucElem)) {
            continue;
        }
        Indent(os, uiIndent + 2);
        os << '[' << i << "]  ";
        PrintElement(os, stField, pucElem, uiIndent + 4);
    }
}

void PrintField(std::ostream &os, const FieldDesc &stField, const void *pvRecord, unsigned uiIndent)
{
    if (stField.eKind == FieldKind::TextPointer) {
        const char *pcText = static_cast<const char *>(LoadPointer(stField, pvRecord));
        os << (pcText == nullptr ? "null" : TextValue(pcText, std::strlen(pcText) + 1, Escape::Quoted)) << '\n';
        return;
    }
    const unsigned char *pucFirst = FirstElement(stField, pvRecord);
    if (pucFirst == nullptr) {
        os << "null\n";
    } else if (IsArray(stField)) {
        PrintArray(os, stField, pvRecord, uiIndent);
    } else {
        PrintElement(os, stField, pucFirst, uiIndent + 2);
    }
}

/* ---- from JSON --------------------------------------------------------------------- */

bool Fail(std::string &strError, const std::string &strPath, const std::string &strWhat)
{
    strError = strPath + ": " + strWhat;
    return false;
}

bool RecordFromJsonAt(const RecordDesc &stDesc, const Json::Value &jsRecord, void *pvRecord,
                      const std::string &strPrefix, std::string &strError);

bool ElementFromJson(const FieldDesc &stField, const Json::Value &jsValue, unsigned char *pucElem,
                     const std::string &strPath, std::string &strError)
{
    switch (stField.eKind) {
    case FieldKind::Text: {
        if (!jsValue.isString()) {
            return Fail(strError, strPath, "expected a text");
        }
        const std::string strText = jsValue.asString();
        if (strText.size() + 1 > stField.uiElemSize) {
            return Fail(strError, strPath,
                        "text of " + std::to_string(strText.size()) + " bytes does not fit its " +
                            std::to_string(stField.uiElemSize) + "-byte field");
        }
        std::memcpy(pucElem, strText.c_str(), strText.size() + 1);
        return true;
    }
    case FieldKind::U32:
        if (!jsValue.isUInt()) {
            return Fail(strError, strPath, "expected a number from 0 to 4294967295");
        }
        Store<uint32_t>(pucElem, jsValue.asUInt());
        return true;
    case FieldKind::I32:
        if (!jsValue.isInt()) {
            return Fail(strError, strPath, "expected a number from -2147483648 to 2147483647");
        }
        Store<int32_t>(pucElem, jsValue.asInt());
        return true;
    case FieldKind::Record:
        return RecordFromJsonAt(*stField.pstRecord, jsValue, pucElem, strPath + ".", strError);
    case FieldKind::Pointer:
    case FieldKind::TextPointer:
        break;
    }
    return Fail(strError, strPath, "is set by the module and cannot be given");
}

bool FieldFromJson(const FieldDesc &stField, const Json::Value &jsValue, void *pvRecord, const std::string &strPath,
                   std::string &strError)
{
    if (stField.eKind == FieldKind::Pointer || stField.eKind == FieldKind::TextPointer) {
        return jsValue.isNull() || Fail(strError, strPath, "is set by the module and cannot be given");
    }
    unsigned char *pucFirst = At(pvRecord, stField.uiOffset);
    if (stField.uiCount == 0) {
        return ElementFromJson(stField, jsValue, pucFirst, strPath, strError);
    }
    if (!jsValue.isArray()) {
        return Fail(strError, strPath, "expected an array");
    }
    if (jsValue.size() > stField.uiCount) {
        return Fail(strError, strPath,
                    std::to_string(jsValue.size()) + " entries given, the field holds " +
                        std::to_string(stField.uiCount));
    }
    for (Json::ArrayIndex i = 0; i < jsValue.size(); ++i) {
        if (!ElementFromJson(stField, jsValue[i], pucFirst + i * stField.uiElemSize,
                             strPath + "[" + std::to_string(i) + "]", strError)) {
            return false;
        }
    }
    return true;
}

/* A counted array given without its counter counts its entries; no counter may claim
 * more entries than its array holds. */
bool SettleCounters(const RecordDesc &stDesc, const Json::Value &jsRecord, void *pvRecord, const std::string &strPrefix,
                    std::string &strError)
{
    for (const FieldDesc &stField : stDesc) {
        if (stField.uiCount == 0 || stField.eFill != Fill::Counted) {
            continue;
        }
        unsigned char *pucCounter = At(pvRecord, stField.uiCounterOffset);
        if (!jsRecord.isMember(stField.pcCounter) && jsRecord.isMember(stField.pcName)) {
            Store<uint32_t>(pucCounter, jsRecord[stField.pcName].size());
        }
        const uint32_t uiCounter = Load<uint32_t>(pucCounter);
        if (uiCounter > stField.uiCount) {
            return Fail(strError, strPrefix + stField.pcCounter,
                        std::to_string(uiCounter) + " exceeds the " + std::to_string(stField.uiCount) + " entries of " +
                            stField.pcName);
        }
    }
    return true;
}

bool RecordFromJsonAt(const RecordDesc &stDesc, const Json::Value &jsRecord, void *pvRecord,
                      const std::string &strPrefix, std::string &strError)
{
    const std::string strWhere = strPrefix.empty() ? stDesc.pcName : strPrefix.substr(0, strPrefix.size() - 1);
    if (!jsRecord.isObject()) {
        return Fail(strError, strWhere, std::string("expected an object (") + stDesc.pcName + ")");
    }
    for (const std::string &strName : jsRecord.getMemberNames()) {
        const FieldDesc *pstField = stDesc.Find(strName.c_str());
        if (pstField == nullptr) {
            return Fail(strError, strPrefix + strName, std::string("no such field in ") + stDesc.pcName);
        }
        if (!FieldFromJson(*pstField, jsRecord[strName], pvRecord, strPrefix + strName, strError)) {
            return false;
        }
    }
    return SettleCounters(stDesc, jsRecord, pvRecord, strPrefix, strError);
}

} // namespace

std::string TextValue(const char *pcField, size_t uiCapacity, Escape eEscape)
{
    const unsigned char *pucText = reinterpret_cast<const unsigned char *>(pcField);
    const size_t uiLen = strnlen(pcField, uiCapacity);
    std::string strOut = eEscape == Escape::Quoted ? "\"" : "";
    for (size_t i = 0; i < uiLen;) {
        const size_t uiSeq = Utf8SequenceLength(pucText + i, uiLen - i);
        if (uiSeq == 0) {
            AppendHexByte(strOut, pucText[i]);
            ++i;
            continue;
        }
        if (uiSeq > 1 || eEscape == Escape::Json || !AppendQuotedEscape(strOut, pucText[i])) {
            strOut.append(pcField + i, uiSeq);
        }
        i += uiSeq;
    }
    if (eEscape == Escape::Quoted) {
        strOut += '"';
    }
    return strOut;
}

uint32_t FilledEntries(const FieldDesc &stField, const void *pvRecord)
{
    if (!IsArray(stField)) {
        return 1;
    }
    const unsigned char *pucFirst = FirstElement(stField, pvRecord);
    if (pucFirst == nullptr) {
        return 0;
    }
    const uint32_t uiCounter = stField.pcCounter != nullptr ? Load<uint32_t>(At(pvRecord, stField.uiCounterOffset)) : 0;
    if (stField.uiCount == 0) {
        return uiCounter; /* a heap array holds exactly what its counter says */
    }
    switch (stField.eFill) {
    case Fill::All:
        return stField.uiCount;
    case Fill::Counted:
        return std::min(uiCounter, stField.uiCount);
    case Fill::UntilEmpty:
        break;
    }
    uint32_t uiFilled = 0;
    while (uiFilled < stField.uiCount && !IsEmptyElement(stField, pucFirst + uiFilled * stField.uiElemSize)) {
        ++uiFilled;
    }
    return uiFilled;
}

Json::Value RecordToJson(const RecordDesc &stDesc, const void *pvRecord)
{
    Json::Value jsRecord(Json::objectValue);
    for (const FieldDesc &stField : stDesc) {
        jsRecord[stField.pcName] = FieldToJson(stField, pvRecord);
    }
    return jsRecord;
}

void PrintRecordText(std::ostream &os, const RecordDesc &stDesc, const void *pvRecord, unsigned uiIndent)
{
    size_t uiWidth = 0;
    for (const FieldDesc &stField : stDesc) {
        uiWidth = std::max(uiWidth, std::strlen(stField.pcName));
    }
    for (const FieldDesc &stField : stDesc) {
        Indent(os, uiIndent);
        os << stField.pcName << std::string(uiWidth + 2 - std::strlen(stField.pcName), ' ');
        PrintField(os, stField, pvRecord, uiIndent);
    }
}

bool RecordFromJson(const RecordDesc &stDesc, const Json::Value &jsRecord, void *pvRecord, std::string &strError)
{
    return RecordFromJsonAt(stDesc, jsRecord, pvRecord, "", strError);
}

void ReleaseRecord(const RecordDesc &stDesc, void *pvRecord)
{
    for (const FieldDesc &stField : stDesc) {
        unsigned char *pucField = At(pvRecord, stField.uiOffset);
        if (stField.eKind == FieldKind::Record) {
            for (uint32_t i = 0; i < std::max<uint32_t>(stField.uiCount, 1); ++i) {
                ReleaseRecord(*stField.pstRecord, pucField + i * stField.uiElemSize);
            }
            continue;
        }
        if ((stField.eKind != FieldKind::Pointer && stField.eKind != FieldKind::TextPointer) ||
            stField.eOwner == Owner::None) {
            continue;
        }
        void *pvHeld = Load<void *>(pucField);
        if (pvHeld == nullptr) {
            continue;
        }
        if (stField.eOwner == Owner::SiteRecord) {
            freeSiteMem(static_cast<tagLOGIN_S_SITE *>(pvHeld), 1);
        } else {
            KOSA_MemFreeD(pvHeld, __LINE__, __FILE__);
        }
        Store<void *>(pucField, nullptr);
    }
}

bool ReadU32(const RecordDesc &stDesc, const void *pvRecord, const char *pcPath, uint32_t &uiValue)
{
    const char *pcDot = std::strchr(pcPath, '.');
    const std::string strName = pcDot ? std::string(pcPath, pcDot) : std::string(pcPath);
    const FieldDesc *pstField = stDesc.Find(strName.c_str());
    if (pstField == nullptr || pstField->uiCount != 0) {
        return false;
    }
    if (pcDot != nullptr) {
        return pstField->eKind == FieldKind::Record &&
               ReadU32(*pstField->pstRecord, At(pvRecord, pstField->uiOffset), pcDot + 1, uiValue);
    }
    if (pstField->eKind != FieldKind::U32) {
        return false;
    }
    uiValue = Load<uint32_t>(At(pvRecord, pstField->uiOffset));
    return true;
}

void ShowSecrets(bool bShown)
{
    g_bSecretsShown = bShown;
}

} // namespace atrium_records
