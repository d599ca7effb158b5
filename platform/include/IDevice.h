#pragma once

class ICard;
struct FactoryParams;

// The machine the host is connected to. The slot order is a binary contract
// with the plug-ins and is kept exactly.
class IDevice
{
public:
    virtual ~IDevice() = default;
    // The connected card, or null when none is connected.
    virtual ICard* GetCurrentCard() = 0;
    // Writes the 720-byte factory parameter record into the card; 0 is success.
    virtual int WriteFactoryParams(FactoryParams* pParams) = 0;
    // Fills the record from the card; 0 is success.
    virtual int ReadFactoryParams(FactoryParams* pParams) = 0;
};
