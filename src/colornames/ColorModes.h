// Ink sets as one number, the colour mode, and back.
//
// A colour mode above 0 is the code of an ink set that is known by name. A negative one is a set of
// flags: bit 31, and one bit a colorant, those of the colour definitions file included. Codes are
// compared as a whole; those above 8192 are no combinations of flags.
//
// The definitions file (ColorDefinitions.h) is read by each function when it first needs it, and
// looked for again at each call until it gives an entry. All functions may be called from many
// threads at once.
#pragma once

#include "platform/Export.h"
#include "platform/plinth/AStringArray.h"

/// The mode of an ink set, whose names are compared exactly; 0, and no names, when it is none that
/// the system can tell. `orderedNames` receives the names in canonical order.
///
/// Sets known by name are told by how many names there are and by a few of them: the others are not
/// looked at, deliberately, and the canonical names are given in any case. What matches none of
/// them must consist of different known colorants. An empty list is the set of no inks, 0x80000000.
VKCL_API int GetColorModeByNames(const AStringArray& names, AStringArray& orderedNames);

/// The mode of the first `count` strings; 0 for a null array that should hold any.
VKCL_API int GetColorModeFromNames(const char** names, int count);

/// The colorants of a mode in canonical order: dark inks, extra ones, then light and medium inks.
/// None for a code of no ink set.
VKCL_API void GetStandardColorNamesByColorMode(int mode, AStringArray& names);

///@{
/// How many inks a mode has, how many of them are of full strength, and how many light or medium;
/// 0 for a code of no ink set.
VKCL_API int GetNumberOfChannels(int mode);
VKCL_API int GetNumberOfDarkChannels(int mode);
VKCL_API int GetNumberOfNonDarkChannels(int mode);
///@}

/// The inks of full strength, in canonical order; true when there is one. Two answers differ from
/// the names of the set, deliberately: 512 gives Red, Green and Blue, and 8 gives Gray.
VKCL_API bool GetDarkNames(const int& mode, AStringArray& names);

/// The colour space signature (ICC.1:2001-04, 6.1.5 and Amendment) of a number of channels from 1
/// to 15, of which 3 are 'CMY ' where `cmy` is not 0, else 'RGB '. 0xFFFFFFFF for other numbers
/// and, deliberately, for 2.
VKCL_API unsigned int GetColorSpaceFromNumberOfColors(unsigned int numberOfColors, int cmy);
