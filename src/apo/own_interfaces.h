// The interface of each class's own. It has no methods: it says which class an object is of.
#pragma once

#include "platform/published/unknown.h"

namespace korva::apo {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // published interfaces have no destructor

struct IKORVASFX : public IUnknown {};
struct IKORVAMFX : public IUnknown {};
struct IKORVAEFX : public IUnknown {};

#pragma GCC diagnostic pop

}  // namespace korva::apo

namespace korva::published {

/// {5AC1067F-C44E-47ED-9472-79D1751CA083}
template <>
inline constexpr GUID iidOf<apo::IKORVASFX> = {
    0x5AC1067F, 0xC44E, 0x47ED, {0x94, 0x72, 0x79, 0xD1, 0x75, 0x1C, 0xA0, 0x83}};

/// {CE99F2CF-3CEE-4D7F-B682-74906B40D4AC}
template <>
inline constexpr GUID iidOf<apo::IKORVAMFX> = {
    0xCE99F2CF, 0x3CEE, 0x4D7F, {0xB6, 0x82, 0x74, 0x90, 0x6B, 0x40, 0xD4, 0xAC}};

/// {2E7354F1-E611-457C-95CD-BD4178D88363}
template <>
inline constexpr GUID iidOf<apo::IKORVAEFX> = {
    0x2E7354F1, 0xE611, 0x457C, {0x95, 0xCD, 0xBD, 0x41, 0x78, 0xD8, 0x83, 0x63}};

}  // namespace korva::published
