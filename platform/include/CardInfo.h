#pragma once

#include <cstddef>
#include <cstdint>

// What the card function "GetCardInfo" fills: counters first, then the two
// NUL-terminated version texts.
struct CardInfo
{
    int32_t totalWorkTime;     // seconds
    int32_t totalJobTime;      // seconds
    int32_t totalXMove;        // the controller's unit
    int32_t totalYMove;
    char firmwareVersion[64];
    char panelVersion[64];
};

static_assert(sizeof(CardInfo) == 144, "CardInfo layout is shared with the card");
static_assert(offsetof(CardInfo, firmwareVersion) == 16, "CardInfo layout is shared with the card");
static_assert(offsetof(CardInfo, panelVersion) == 80, "CardInfo layout is shared with the card");
