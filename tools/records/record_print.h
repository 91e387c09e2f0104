/*
 * record_print.h - everything done to a record through its description (record_desc.h):
 * print it as JSON or as aligned text, fill a request record from JSON, release what a
 * parser handed over, read one number by its dotted field path.
 *
 * Texts are read up to their terminator or their capacity, whichever comes first (some
 * fields are filled without a terminator). Bytes that are not UTF-8 are shown as \xNN so
 * that any capture prints. Arrays show only the entries that hold data (see Fill); a null
 * pointer prints as null.
 */
#ifndef ATRIUM_RECORD_PRINT_H
#define ATRIUM_RECORD_PRINT_H

#include <cstdint>
#include <ostream>
#include <string>

#include <json/json.h>

#include "record_desc.h"

namespace atrium_records {

/* How a text is escaped: for a JSON string (the writer escapes the rest) or C-style in
 * double quotes for the text form. */
enum class Escape : uint8_t { Json, Quoted };

/* The text of a char field of uiCapacity bytes. */
std::string TextValue(const char *pcField, size_t uiCapacity, Escape eEscape);

/* Entries of an array field (fixed or behind a pointer) that hold data. */
uint32_t FilledEntries(const FieldDesc &stField, const void *pvRecord);

/* Whether the fields that hold secrets (FieldDesc::bSecret) print as they are. Off by
 * default: a secret that is not empty prints as "*** (N bytes)", so that a shared output
 * tells whether it came through without telling what it is. */
void ShowSecrets(bool bShown);

Json::Value RecordToJson(const RecordDesc &stDesc, const void *pvRecord);

/* Aligned "name  value" lines, nested records indented by two more spaces per level. */
void PrintRecordText(std::ostream &os, const RecordDesc &stDesc, const void *pvRecord, unsigned uiIndent);

/*
 * Fills a zeroed record from a JSON object whose members are field names (the shape that
 * RecordToJson prints). A counted array given without its counter sets the counter to the
 * number of entries given. Pointer fields cannot be given. On failure returns false with a
 * message naming the field ("astUniCallBean[0].acStartDate: ...").
 */
bool RecordFromJson(const RecordDesc &stDesc, const Json::Value &jsRecord, void *pvRecord, std::string &strError);

/* Releases what a parser handed over with the record (Owner of each pointer field, nested
 * records included) and clears those pointers. */
void ReleaseRecord(const RecordDesc &stDesc, void *pvRecord);

/* Reads the u32 field at a dotted path such as "stResult.uiResultCode". */
bool ReadU32(const RecordDesc &stDesc, const void *pvRecord, const char *pcPath, uint32_t &uiValue);

} // namespace atrium_records

#endif /* ATRIUM_RECORD_PRINT_H */
