/*
 * handed_over.h - releasing what the module's parsers hand their caller, as the login
 * service does. Header only, with no test framework in it: the unit and hardening tests,
 * the fuzz targets and the benchmarks all release records this way.
 */
#ifndef ATRIUM_XML_HANDED_OVER_H
#define ATRIUM_XML_HANDED_OVER_H

#include "atrium_xml.h"

/* A portal login's selected site, SIP server list and extra parameters; the pointers are
 * cleared, so a record may be released twice. */
inline void ReleaseUserHandedOver(tagLOGIN_S_ATRIUM_USER_INFO &stUser)
{
    if (stUser.pstSiteInfo != nullptr) {
        freeSiteMem(stUser.pstSiteInfo, 1);
        stUser.pstSiteInfo = nullptr;
    }
    KOSA_MemFreeD(stUser.stSipServerList.pstServer, __LINE__, __FILE__);
    stUser.stSipServerList.pstServer = nullptr;
    KOSA_MemFreeD(stUser.pstExtraParm, __LINE__, __FILE__);
    stUser.pstExtraParm = nullptr;
}

/* A guest's site copy; the pointer is cleared. */
inline void ReleaseTempUserHandedOver(tagXML_S_TANDEM_TEMPUSER_INFO &stTempUser)
{
    if (stTempUser.pstSite != nullptr) {
        freeSiteMem(stTempUser.pstSite, 1);
        stTempUser.pstSite = nullptr;
    }
}

#endif /* ATRIUM_XML_HANDED_OVER_H */
