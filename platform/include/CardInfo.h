#pragma once

/// \file CardInfo.h
/// \brief The record that the card function "GetCardInfo" fills.

#include <cstddef>
#include <cstdint>

/// \brief The card's counters and version texts; 144 bytes.
///
/// The plug-in zero-fills one and hands its address to ICard::QueryFunction() with the name
/// "GetCardInfo" (a void* in the QVariant); the card fills it during the call. Counters come
/// first, then the two version texts. The layout is shared with the card and checked below when
/// the header is compiled. The settings dialog's System tab shows the fields.
struct CardInfo
{
    int32_t totalWorkTime;     ///< Total work time, seconds.
    int32_t totalJobTime;      ///< Total job time, seconds.
    int32_t totalXMove;        ///< Total travel of X, in the controller's unit.
    int32_t totalYMove;        ///< Total travel of Y, in the controller's unit.
    char firmwareVersion[64];  ///< Mainboard firmware version, NUL-terminated (all 64 bytes are read when there is no NUL), local 8-bit encoding.
    char panelVersion[64];     ///< Panel firmware version, same rules as firmwareVersion.
};

static_assert(sizeof(CardInfo) == 144, "CardInfo layout is shared with the card");
static_assert(offsetof(CardInfo, firmwareVersion) == 16, "CardInfo layout is shared with the card");
static_assert(offsetof(CardInfo, panelVersion) == 80, "CardInfo layout is shared with the card");
