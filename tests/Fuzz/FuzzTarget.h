// A reader of foreign text, and what holds whatever the text is.
//
// Each target is one function in a file of its own: FUZZ_TARGET(UdevRecord) { ... bytes ... }. The
// preset "fuzz" makes a libFuzzer program of each; the other ones make one test that reads every
// file of every corpus.
#pragma once

#include <string_view>
#include <vector>

struct FuzzTarget {
    using Function = void (*)(std::string_view bytes);

    const char* name;  // also the name of its corpus's folder
    Function run;

    // Those that the program is linked of, in no order.
    static std::vector<FuzzTarget>& all();
    static bool add(const FuzzTarget& target);
};

// Ends the program with the sentence when it is not true.
void ensure(bool isTrue, const char* sentence);

#define FUZZ_TARGET(Name)                                                                      \
    static void fuzz##Name(std::string_view bytes);                                            \
    [[maybe_unused]] static const bool is##Name##Added = FuzzTarget::add({#Name, fuzz##Name}); \
    static void fuzz##Name(std::string_view bytes)
