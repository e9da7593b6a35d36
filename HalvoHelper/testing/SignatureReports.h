// What the system's package tool prints about packages, for tests that need a report.
#pragma once

#include <string_view>

namespace halvo {

// A package of the maker that is as it should be. The names are Apple's, and so are the fingerprints of intermediate
// and root; the leaf's belongs to nobody.
inline constexpr std::string_view kGoodSignatureReport =
    R"(Package "incoming.pkg":
   Status: signed by a developer certificate issued by Apple for distribution
   Notarization: trusted by the Apple notary service
   Signed with a trusted timestamp on: 2026-02-11 09:30:12 +0000
   Certificate Chain:
    1. Developer ID Installer: Halvo Audio (QX4TRM2ZL9)
       Expires: 2029-02-01 22:12:15 +0000
       SHA256 Fingerprint:
           B8 67 9C 5B 91 E8 62 E4 A2 E6 EC 4C DE 0A 0B 18 7E 70 49 F5 39 5C
           6B 58 35 BF 9F 18 E4 DF A8 D5
       ------------------------------------------------------------------------
    2. Developer ID Certification Authority
       Expires: 2031-09-17 00:00:00 +0000
       SHA256 Fingerprint:
           F1 6C D3 C5 4C 7F 83 CE A4 BF 1A 3E 6A 08 19 C8 AA A8 E4 A1 52 8F
           D1 44 71 5F 35 06 43 D2 DF 3A
       ------------------------------------------------------------------------
    3. Apple Root CA
       Expires: 2035-02-09 21:40:36 +0000
       SHA256 Fingerprint:
           B0 B1 73 0E CB C7 FF 45 05 14 2C 49 F1 29 5E 6E DA 6B CA ED 7E 2C
           68 C5 BE 91 B5 A1 10 01 F0 24

)";

}  // namespace halvo
