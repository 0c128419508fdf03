// The transport's two password encodings. Both are reversible so that the simulated back end,
// which keeps passwords in clear, can check what a client sends:
//   uni form  (Kel_UniEncode):    "U" + upper-case hex of (byte XOR salt)
//   3rd form  (Kel_UniEncode3rd): "3" + upper-case hex of (byte + salt) mod 256
// where the salt of byte i is the i-th byte (cyclic) of the customer number, or 0x5A for an
// empty customer number.
#pragma once

#include <string>

namespace sim {

enum class PwdForm { Uni, Third };

std::string EncodePassword(PwdForm form, const std::string& khh, const std::string& clear);
// False when `encoded` is not in `form` for this customer number.
bool DecodePassword(PwdForm form, const std::string& khh, const std::string& encoded,
                    std::string* clear);

}  // namespace sim
