/*
 * record_desc.h - one description of every record the module fills or reads: each field
 * by name, offset, kind and size, and how many entries of an array hold data.
 *
 * The printers (JSON and aligned text), the reader that fills a request record from JSON
 * and the release of what a parser handed to its caller are all driven by these tables
 * (record_print.h), so a record's layout is written down once, here, for the tool
 * atrium-xml and for its tests alike. The tables are checked against the headers at
 * compile time (every field's type) and by the tests (every byte of every record).
 */
#ifndef ATRIUM_RECORD_DESC_H
#define ATRIUM_RECORD_DESC_H

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "atrium_xml.h"

namespace atrium_records {

struct RecordDesc;

/* What one element of a field is. */
enum class FieldKind : uint8_t {
    Text,        /* char[uiElemSize]: NUL-terminated inside its capacity, or filling it */
    U32,         /* uint32_t */
    I32,         /* int32_t */
    Record,      /* a nested record (pstRecord) */
    Pointer,     /* a pointer to one record, or to uiCounter records (pstRecord) */
    TextPointer, /* a pointer to a NUL-terminated text */
};

/* Which entries of an array hold data. */
enum class Fill : uint8_t {
    All,        /* every entry (fixed slots such as ms1..ms8) */
    Counted,    /* the first N, N read from the sibling u32 field named pcCounter */
    UntilEmpty, /* up to the first entry whose text (or first text field) is empty */
};

/* Who releases what a pointer field holds once a parser handed it over. */
enum class Owner : uint8_t {
    None,
    SiteRecord,  /* freeSiteMem(p, 1): a selected site or a guest's site copy */
    ModuleBlock, /* KOSA_MemFreeD(p) */
};

struct FieldDesc {
    const char *pcName;
    size_t uiOffset;
    FieldKind eKind;
    size_t uiElemSize; /* bytes of one element (text capacity, record size) */
    uint32_t uiCount;  /* entries of a fixed array; 0 for a single element */
    Fill eFill;
    const char *pcCounter; /* Fill::Counted, and a Pointer to an array */
    size_t uiCounterOffset;
    const RecordDesc *pstRecord;
    Owner eOwner;
    bool bSecret = false; /* a password, token or key: masked when printed (record_print.h) */
};

struct RecordDesc {
    const char *pcName; /* the C type name */
    size_t uiSize;
    const FieldDesc *pstFields;
    size_t uiNumFields;

    const FieldDesc *begin() const { return pstFields; }
    const FieldDesc *end() const { return pstFields + uiNumFields; }
    const FieldDesc *Find(const char *pcField) const;
};

/* Bytes a field takes inside its record. */
size_t FieldBytes(const FieldDesc &stField);

/* Every described record, nested ones included. */
const std::vector<const RecordDesc *> &AllRecords();
/* The description of a C type by name, or null. */
const RecordDesc *FindRecord(const char *pcTypeName);

/* The out-pointer of XmlParseGetServiceTPFromRandom, held as a record so that it prints
 * and releases like every other answer. */
typedef struct tagTOOL_S_SERVICE_TP {
    char *pcServiceTp; /* decoded bytes with a terminator; KOSA_MemFreeD */
} tagTOOL_S_SERVICE_TP;

/* ---- descriptions ------------------------------------------------------------------ */

extern const RecordDesc g_stStgGroupDesc;
extern const RecordDesc g_stAccessServerDesc;
extern const RecordDesc g_stSiteDesc;
extern const RecordDesc g_stServerAddrInfoDesc;
extern const RecordDesc g_stServerListDesc;
extern const RecordDesc g_stExtraParmDesc;
extern const RecordDesc g_stUmsInfoDesc;
extern const RecordDesc g_stAtriumUserInfoDesc;
extern const RecordDesc g_stTempUserInfoDesc;
extern const RecordDesc g_stTandemResultDesc;
extern const RecordDesc g_stTandemProfileDesc;
extern const RecordDesc g_stTandemEuaDesc;
extern const RecordDesc g_stTandemSipDesc;
extern const RecordDesc g_stTandemStgDesc;
extern const RecordDesc g_stTandemTmsDesc;
extern const RecordDesc g_stTandemAtriumDesc;
extern const RecordDesc g_stTandemLoginResultDesc;
extern const RecordDesc g_stAtriumSearchResultDesc;
extern const RecordDesc g_stAtriumTokenInfoDesc;
extern const RecordDesc g_stAtriumRightConfigDesc;
extern const RecordDesc g_stTandemVersionResultDesc;
extern const RecordDesc g_stTandemRandomResultDesc;
extern const RecordDesc g_stTandemSearchResultDesc;
extern const RecordDesc g_stTempUserAccountInfoDesc;
extern const RecordDesc g_stEndpointMsgResultDesc;
extern const RecordDesc g_stUniCallBeanDesc;
extern const RecordDesc g_stUniCallCfgDesc;
extern const RecordDesc g_stLinkedPhoneDesc;
extern const RecordDesc g_stLinkedPhoneResultDesc;
extern const RecordDesc g_stLinkedPhoneInfoDesc;
extern const RecordDesc g_stServiceTpDesc;

} // namespace atrium_records

#endif /* ATRIUM_RECORD_DESC_H */
