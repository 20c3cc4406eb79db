// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#pragma once

#include <map>
#include <string>
#include <vector>

#include "TesmirExport.h"
#include "TesmirLibcxx.h"

// Helpers for taking supplicant replies and events apart. All bytes are data, NUL and bytes
// above 0x7f included. Nothing is logged, no error is reported and no state is kept.
class TESMIR_EXPORT WpaStringUtils {
  public:
    // Removes every occurrence of |ch| anywhere in the string (not only at the ends).
    // The copy-out form overwrites |output|; |input| and |output| may be the same object.
    //   Strip("a-b-", '-', out)  ->  out == "ab"
    static void Strip(const std::string& input, char ch, std::string& output);
    static void Strip(std::string& str, char ch);

    // Removes every occurrence of each byte of |set|, one full pass per byte of |set| in its
    // order. An empty set leaves the string as it was (the copy-out form copies it).
    // |set| is read afresh at every pass, so a set that is also the output shrinks as it goes:
    //   std::string s = "abcabc"; Strip(s, s);  ->  s == "bb"
    static void Strip(const std::string& input, const std::string& set, std::string& output);
    static void Strip(std::string& str, const std::string& set);

    // Appends to |fields| the fields of |text| cut at |delimiter|, after normalising blanks
    // (space and tab only): leading blanks are dropped and every other run of blanks is cut to
    // its first byte. Always appends one field more than there are delimiters left; empty fields
    // are kept. |fields| is not cleared first, and |text| may be one of its elements.
    //   SplitString("  a  b ", ' ', v)  ->  v += {"a", "b", ""}
    //   SplitString("a,,b", ',', v)     ->  v += {"a", "", "b"}
    //   SplitString("", ',', v)         ->  v += {""}
    static void SplitString(const std::string& text, char delimiter,
                            std::vector<std::string>& fields);

    // Fills in |keyValues|, whose keys are ECMAScript regexes: for each key, the first
    // space-separated field of |text| in which the key is found selects the field after it,
    // which becomes the value with every '<' and '>' removed. Keys found in no field keep their
    // value, and so does a key found only in the last field. No key is added or removed.
    //   text "id 3 name <home> chan 6", keys {"id", "name", "chan"}  ->  "3", "home", "6"
    // A malformed key aborts the process.
    static void GetKeyValues(const std::string& text,
                             std::map<std::string, std::string>& keyValues);
};
