/*
 * print.cpp - the envelope around a record: answer, kind, parser, result and what was
 * observed; the record itself is printed from its description (record_print.h).
 */
#include "print.h"

#include "record_print.h"

namespace atrium_tool {

namespace {

Json::Value ResultJson(const ParsedAnswer &stParsed)
{
    Json::Value jsResult(Json::objectValue);
    jsResult["code"] = stParsed.iCode ? Json::Value(static_cast<Json::Int64>(*stParsed.iCode)) : Json::Value();
    jsResult["meaning"] = stParsed.Meaning();
    return jsResult;
}

Json::Value DroppedJson(const Observations &stSeen)
{
    Json::Value jsDropped(Json::arrayValue);
    for (const DroppedValue &stDropped : stSeen.vecDropped) {
        Json::Value jsOne(Json::objectValue);
        jsOne["routine"] = stDropped.strRoutine;
        jsOne["capacity"] = stDropped.uiCapacity;
        jsOne["needed"] = stDropped.uiNeeded;
        jsDropped.append(jsOne);
    }
    return jsDropped;
}

Json::Value MissingJson(const Observations &stSeen)
{
    Json::Value jsMissing(Json::arrayValue);
    for (const std::string &strMissing : stSeen.vecMissing) {
        jsMissing.append(strMissing);
    }
    return jsMissing;
}

std::string ResultText(const ParsedAnswer &stParsed)
{
    return (stParsed.iCode ? std::to_string(*stParsed.iCode) + " (" + stParsed.Meaning() + ")" : stParsed.Meaning());
}

void PrintJson(std::ostream &os, const std::string &strAnswer, const ParsedAnswer &stParsed)
{
    Json::Value jsOut = AnswerSummaryJson(strAnswer, stParsed);
    jsOut["recordType"] = stParsed.pstKind->pstRecord->pcName;
    jsOut["record"] = atrium_records::RecordToJson(*stParsed.pstKind->pstRecord, stParsed.pRecord->Get());
    os << JsonText(jsOut);
}

void PrintText(std::ostream &os, const std::string &strAnswer, const ParsedAnswer &stParsed)
{
    const AnswerKind &stKind = *stParsed.pstKind;
    os << "answer   " << strAnswer << '\n';
    for (const std::string &strNote : stParsed.vecCaptureNotes) {
        os << "capture  " << strNote << '\n';
    }
    os << "kind     " << stKind.pcName << " (" << stKind.pcFunction << ")\n"
       << "result   " << ResultText(stParsed) << '\n';
    if (!stParsed.strErrorAt.empty()) {
        os << "where    " << stParsed.strErrorAt << '\n';
    }
    if (stParsed.uiVerdict) {
        os << "server   " << stKind.pcVerdict << " " << *stParsed.uiVerdict << '\n';
    }
    if (stKind.uiTakes & kTakesProfileFile) {
        os << "profile  "
           << (stParsed.uiProfileBytes ? std::to_string(*stParsed.uiProfileBytes) + " bytes saved"
                                       : std::string("not saved"))
           << '\n';
    }
    for (const DroppedValue &stDropped : stParsed.stSeen.vecDropped) {
        os << "dropped  " << FormatDropped(stDropped) << '\n';
    }
    for (const std::string &strMissing : stParsed.stSeen.vecMissing) {
        os << "missing  " << strMissing << '\n';
    }
    os << "record   " << stKind.pstRecord->pcName << '\n';
    atrium_records::PrintRecordText(os, *stKind.pstRecord, stParsed.pRecord->Get(), 2);
}

} // namespace

std::string JsonText(const Json::Value &jsValue)
{
    Json::StreamWriterBuilder stBuilder;
    stBuilder["indentation"] = "  ";
    stBuilder["emitUTF8"] = true;
    return Json::writeString(stBuilder, jsValue) + "\n";
}

Json::Value AnswerSummaryJson(const std::string &strAnswer, const ParsedAnswer &stParsed)
{
    const AnswerKind &stKind = *stParsed.pstKind;
    Json::Value jsOut(Json::objectValue);
    jsOut["answer"] = strAnswer;
    jsOut["kind"] = stKind.pcName;
    jsOut["function"] = stKind.pcFunction;
    jsOut["result"] = ResultJson(stParsed);
    if (!stParsed.strErrorAt.empty()) {
        jsOut["result"]["where"] = stParsed.strErrorAt;
    }
    if (!stParsed.vecCaptureNotes.empty()) {
        Json::Value &jsNotes = jsOut["capture"] = Json::Value(Json::arrayValue);
        for (const std::string &strNote : stParsed.vecCaptureNotes) {
            jsNotes.append(strNote);
        }
    }
    if (stKind.pcVerdict != nullptr) {
        jsOut["serverVerdict"] = stParsed.uiVerdict.value_or(0);
    }
    if (stKind.uiTakes & kTakesProfileFile) {
        jsOut["profileBytesSaved"] =
            stParsed.uiProfileBytes ? Json::Value(static_cast<Json::UInt64>(*stParsed.uiProfileBytes)) : Json::Value();
    }
    jsOut["dropped"] = DroppedJson(stParsed.stSeen);
    jsOut["missing"] = MissingJson(stParsed.stSeen);
    return jsOut;
}

void PrintParsedAnswer(std::ostream &os, const std::string &strAnswer, const ParsedAnswer &stParsed, Format eFormat)
{
    if (eFormat == Format::Json) {
        PrintJson(os, strAnswer, stParsed);
    } else {
        PrintText(os, strAnswer, stParsed);
    }
}

void PrintTraces(std::ostream &os, const Observations &stSeen, const std::string &strPrefix)
{
    for (const TraceRecord &stTrace : stSeen.vecTraces) {
        os << strPrefix << FormatTrace(stTrace) << '\n';
    }
}

} // namespace atrium_tool
