/*
 * reader_walk.cpp - the plan and the walk of reader_walk.h.
 *
 * The plan numbers the elements of each recorded document depth first through the XML
 * library's navigation, marks the elements read and their ancestors as needed, passes every
 * child up to the last needed one of each parent, and checks that pugixml's parse of the
 * body has the same shape before the walk relies on the numbering.
 */
#include "reader_walk.h"

#include "ktl_xml_options.h"

#include <benchmark/benchmark.h>

#include <unordered_map>

namespace bench {

namespace {

/* The elements of a recorded document, numbered depth first from 0 (the root). */
struct Numbered {
    std::vector<uint32_t> vecParent;  /* by number: the parent's number; the root's is 0, itself */
    std::vector<uint32_t> vecSubtree; /* by number: elements in the subtree, itself included */
    std::unordered_map<_NODE *, uint32_t> mapNumber;
};

uint32_t NumberSubtree(_NODE *pstNode, uint32_t uiParent, Numbered &stOut)
{
    const auto uiOwn = static_cast<uint32_t>(stOut.vecParent.size());
    stOut.vecParent.push_back(uiParent);
    stOut.vecSubtree.push_back(1);
    stOut.mapNumber.emplace(pstNode, uiOwn);
    uint32_t uiSize = 1;
    for (_NODE *pstChild = KTL_XML_GetNodeFirstChild(pstNode); pstChild != nullptr;
         pstChild = KTL_XML_GetNodeNextSibling(pstChild)) {
        uiSize += NumberSubtree(pstChild, uiOwn, stOut);
    }
    stOut.vecSubtree[uiOwn] = uiSize;
    return uiSize;
}

/* The same depth-first shape in pugixml's tree: every child an element, as many as in the
 * library's, subtree sizes equal. */
bool SameShape(pugi::xml_node xNode, const Numbered &stNumbered, uint32_t &uiAt)
{
    if (xNode.type() != pugi::node_element || uiAt >= stNumbered.vecParent.size()) {
        return false;
    }
    const uint32_t uiOwn = uiAt++;
    for (pugi::xml_node xChild = xNode.first_child(); xChild; xChild = xChild.next_sibling()) {
        if (!SameShape(xChild, stNumbered, uiAt)) {
            return false;
        }
    }
    return uiAt - uiOwn == stNumbered.vecSubtree[uiOwn];
}

/* Whether a handle holds a node, read from the handle's one pointer (a protected member of
 * pugixml's public class) rather than through an out-of-line call, as the XML library does. */
class WalkedNode : public pugi::xml_node {
public:
    explicit WalkedNode(pugi::xml_node xNode) : pugi::xml_node(xNode) {}
    bool Holds() const { return _root != nullptr; }
};

/* Visits the passed children of xParent, the first of which is numbered uiAt, and what is
 * passed below them; returns how many it visited. Recursion is safe here: the generated
 * answers nest a few levels deep. */
uint32_t WalkChildren(pugi::xml_node xParent, const std::vector<WalkStep> &vecSteps, uint32_t uiAt)
{
    uint32_t uiVisited = 0;
    for (WalkedNode xChild(xParent.first_child()); xChild.Holds(); xChild = WalkedNode(xChild.next_sibling())) {
        const WalkStep &stStep = vecSteps[uiAt];
        benchmark::DoNotOptimize(*xChild.name());
        benchmark::DoNotOptimize(xChild.value());
        ++uiVisited;
        if (stStep.bDescend) {
            uiVisited += WalkChildren(xChild, vecSteps, uiAt + 1);
        }
        if (stStep.bLastPassed) {
            break;
        }
        uiAt += stStep.uiSubtree;
    }
    return uiVisited;
}

} // namespace

bool PlanWalk(const std::string &strBody, const RequiredReads &stReads, WalkPlan &stPlan, std::string &strWhy)
{
    const std::unique_ptr<pugi::xml_document> pDoc = ParseForWalk(strBody);
    if (pDoc == nullptr) {
        strWhy = "the body does not parse";
        return false;
    }

    /* The elements read and their ancestors, by number, over every recorded document shaped
     * as the body (a call may parse the body twice); reads in documents of another shape
     * are not this walk's. */
    Numbered stShape;
    std::vector<bool> vecNeeded;
    for (_NODE *pstRoot : stReads.vecDocuments) {
        Numbered stNumbered;
        (void)NumberSubtree(pstRoot, 0, stNumbered);
        uint32_t uiShaped = 0;
        if (!SameShape(pDoc->document_element(), stNumbered, uiShaped) || uiShaped != stNumbered.vecParent.size()) {
            continue;
        }
        vecNeeded.resize(stNumbered.vecParent.size(), false);
        for (const RequiredRead &stRead : stReads.vecReads) {
            const auto itNumber = stNumbered.mapNumber.find(stRead.pstNode);
            if (itNumber == stNumbered.mapNumber.end()) {
                continue;
            }
            for (uint32_t uiAt = itNumber->second; !vecNeeded[uiAt]; uiAt = stNumbered.vecParent[uiAt]) {
                vecNeeded[uiAt] = true; /* the root is its own parent: the climb ends there */
            }
        }
        stShape = std::move(stNumbered);
    }
    if (vecNeeded.empty()) {
        strWhy = "no recorded document has the shape of the body";
        return false;
    }
    if (!vecNeeded[0]) {
        strWhy = "the call reads nothing of the body";
        return false;
    }

    /* Each parent's children are passed up to its last needed one. Children are numbered
     * after their parent and in order, so the last needed child has the highest number. */
    const size_t uiElements = vecNeeded.size();
    const uint32_t NONE = UINT32_MAX;
    std::vector<uint32_t> vecLastNeeded(uiElements, NONE);
    for (uint32_t i = 1; i < uiElements; ++i) {
        if (vecNeeded[i]) {
            vecLastNeeded[stShape.vecParent[i]] = i;
        }
    }
    stPlan.vecSteps.assign(uiElements, WalkStep{0, false, false});
    stPlan.uiPassed = 1; /* the root */
    for (uint32_t i = 0; i < uiElements; ++i) {
        WalkStep &stStep = stPlan.vecSteps[i];
        const uint32_t uiLastOfParent = vecLastNeeded[stShape.vecParent[i]];
        stStep.uiSubtree = stShape.vecSubtree[i];
        stStep.bDescend = vecLastNeeded[i] != NONE;
        stStep.bLastPassed = (i == 0) || uiLastOfParent == i;
        stPlan.uiPassed += (i != 0 && uiLastOfParent != NONE && i <= uiLastOfParent) ? 1 : 0;
    }
    if (WalkPassed(*pDoc, stPlan) != stPlan.uiPassed) {
        strWhy = "the walk does not visit the elements the plan passes";
        return false;
    }
    return true;
}

std::unique_ptr<pugi::xml_document> ParseForWalk(const std::string &strBody)
{
    auto pDoc = std::make_unique<pugi::xml_document>();
    if (!pDoc->load_buffer(strBody.data(), strBody.size(), KTL_XML_PUGIXML_OPTIONS, pugi::encoding_utf8)) {
        return nullptr;
    }
    return pDoc;
}

uint32_t WalkPassed(const pugi::xml_document &xDoc, const WalkPlan &stPlan)
{
    return WalkChildren(xDoc, stPlan.vecSteps, 0);
}

} // namespace bench
