/*
 * reader_walk.h - the least walk through pugixml's API that reaches what a call reads.
 *
 * pugixml links an element to its first child and its next sibling only, so a reader built
 * on it that wants the first child of some name passes every child before it, and reaches
 * a deep element only through its ancestors. The plan marks, in a document of the call,
 * every element one of the call's recorded reads touched (required_reads.h), its ancestors,
 * and at each level the children before them; the walk then visits exactly those elements in
 * a document pugixml parsed from the same bytes, asking each for its name (whose first
 * character is read) and its value, stepping with first child and next sibling. Lookups
 * that found nothing are left out, so the walk is a lower bound: any reader of the answer
 * built on pugixml makes at least these calls.
 */
#ifndef ATRIUM_BENCH_READER_WALK_H
#define ATRIUM_BENCH_READER_WALK_H

#include "required_reads.h"

#include <pugixml.hpp>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace bench {

/* One element of the document, in depth-first order. */
struct WalkStep {
    uint32_t uiSubtree; /* elements in its subtree, itself included */
    bool bDescend;      /* some child of it is passed */
    bool bLastPassed;   /* no later sibling is passed */
};

struct WalkPlan {
    std::vector<WalkStep> vecSteps; /* empty: no plan */
    uint32_t uiPassed = 0;          /* elements the walk visits */
};

/* The plan of the walk for a body whose reads were recorded. False, with the reason, when
 * the body does not parse or none of the recorded documents has the element structure of
 * pugixml's parse of the body (every element's children elements only, as in the answers
 * the benchmarks generate). */
bool PlanWalk(const std::string &strBody, const RequiredReads &stReads, WalkPlan &stPlan, std::string &strWhy);

/* The body parsed by pugixml as the XML library parses it; null when it does not parse.
 * (The benchmark parses it just before walking and drops it after, so that the process
 * holds no more memory between runs than it did without the walk.) */
std::unique_ptr<pugi::xml_document> ParseForWalk(const std::string &strBody);

/* Visits the planned elements of the body's document; returns how many it visited. */
uint32_t WalkPassed(const pugi::xml_document &xDoc, const WalkPlan &stPlan);

} // namespace bench

#endif /* ATRIUM_BENCH_READER_WALK_H */
