// The numbers with which a server refuses a sign-on: TLV 8 of SNAC(17,03), or of the closing frame for the
// oldest clients.
#include <algorithm>
#include <iterator>

#include "features/connections/SignOnVerdict.h"

namespace {

struct LoginError {
    std::uint8_t number;
    const char* meaning;
};

constexpr LoginError kErrors[] = {
    {0x01, "The screen name or the password is wrong"},
    {0x02, "The service is unavailable for now"},
    {0x03, "The server has failed"},
    {0x04, "The screen name or the password is wrong"},
    {0x05, "The password is wrong"},
    {0x06, "The server did not understand what AIM sent"},
    {0x07, "The account is not valid"},
    {0x08, "The account has been deleted"},
    {0x09, "The account has expired"},
    {0x0A, "The server cannot reach its database"},
    {0x0B, "The server cannot reach its resolver"},
    {0x0C, "The server's database has invalid fields"},
    {0x0D, "The server's database is in a bad state"},
    {0x0E, "The server's resolver is in a bad state"},
    {0x0F, "The server has failed"},
    {0x10, "The service is offline for now"},
    {0x11, "The account has been suspended"},
    {0x12, "The server's database has failed"},
    {0x13, "The server's database cannot be reached"},
    {0x14, "The server has no place for the session"},
    {0x15, "The server has no place for the session"},
    {0x16, "Too many are signed on from this address"},
    {0x17, "Too many are signed on from this address"},
    {0x18, "You have signed on too often; wait some minutes"},
    {0x19, "You have been warned too much"},
    {0x1A, "The server took too long to find a place for the session"},
    {0x1B, "This version of AIM is too old for the server"},
    {0x1C, "The server wants a newer version of AIM"},
    {0x1D, "You have signed on too often; wait some minutes"},
    {0x1E, "The server cannot sign you on now; wait some minutes"},
    {0x20, "The pass code is wrong"},
    {0x22, "The account is suspended because of its owner's age"},
};
static_assert(std::ranges::is_sorted(kErrors, {}, &LoginError::number));

}  // namespace

std::string LoginErrorText(std::uint16_t number) {
    const auto* const found = std::ranges::find(kErrors, number, &LoginError::number);
    if (found != std::end(kErrors)) return found->meaning;
    return "The server gives a reason that is not known here";
}
