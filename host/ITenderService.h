#pragma once
// The host's tenders (means of payment) and their type codes.
#include <cstdint>
#include <string>

#include "host/IMasterData.h"

namespace kitra::host {

namespace tender_type {
inline constexpr std::int16_t kCash = 1;
inline constexpr std::int16_t kCheque = 2;
inline constexpr std::int16_t kTransfer = 3;
inline constexpr std::int16_t kCard = 4;       // payments carry a card detail record
inline constexpr std::int16_t kVoucher = 5;    // may not stand for a restaurant tender
inline constexpr std::int16_t kOnAccount = 6;  // the customer pays later: no payment line
}  // namespace tender_type

struct Tender {
    std::int16_t TenderID = 0;
    std::string Description;
    std::int16_t TenderType = tender_type::kCash;
    bool GivesChange = false;
    double MaximumAmount = 0;      // 0: no limit
    double CommissionPercent = 0;  // charged by the card or voucher issuer
    bool OpensCashDrawer = false;

    bool operator==(const Tender&) const = default;
};

class ITenderService : public IMasterData<Tender, std::int16_t> {};

}  // namespace kitra::host
