#include "card/card_identity.h"

#include <cstring>

#include "card/requests.h"

namespace kestvox {

namespace {

// Pages are runs of big-endian 16-bit words.
DWORD BigEndianWord(const BYTE* page, unsigned byte) {
    return page[byte] * 256u + page[byte + 1];
}

bool CheckIsRight(const BYTE* page) {
    DWORD sum = 0;
    for (unsigned byte = 0; byte < NvramPageSize; byte += 2) {
        sum += BigEndianWord(page, byte);
    }
    return (sum & 0xFFFF) == 0xFFFF;
}

void ForgetIdentity(CardRecord& card) {
    card.BoardRevisionLetter = UnknownBoardRevision;
    card.BoardRevision = 0;
    card.FpgaRevision = 0;
    card.SerialNumber = 0;
    card.FpgaVersionMajor = 0;
    card.FpgaVersionMinor = 0;
    card.FpgaVersionBuild = 0;
}

}  // namespace

void ReadCardIdentity(CardHandle* handle, CardRecord& card) {
    ForgetIdentity(card);
    BYTE page[NvramPageSize];
    memset(page, 0xFF, sizeof page);
    if (!ReadNvramPage(handle, NvramIdentityPage, page) || !CheckIsRight(page)) {
        return;
    }
    card.BoardRevisionLetter = static_cast<char>(page[5]);
    card.BoardRevision = BigEndianWord(page, 6);
    card.FpgaRevision = BigEndianWord(page, 8);
    card.SerialNumber = BigEndianWord(page, 10);
    if (!ReadNvramPage(handle, NvramVersionPage, page)) {
        return;
    }
    card.FpgaVersionMajor = page[122];
    card.FpgaVersionMinor = page[123];
    card.FpgaVersionBuild = BigEndianWord(page, 124);
}

}  // namespace kestvox
