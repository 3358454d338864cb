// qdOS::GetOpt: the command-line parser.
//
// Options are declared by a text "v|verbose" (one letter, one long name) and the types of their
// arguments, separated by blanks: "" (none), "int", "int int int", "string ? string" (what follows
// the "?" is optional). The types decide only what is no argument; the caller reads the texts.
//
// Grammar of the words:
//   -v          a flag; flags may be grouped: -vp
//   -m3  -m 3   an option with an argument, attached or in the next word; also last in a group
//   --magnify=3  --magnify 3
//   --          ends the options
// A word looks like an option when it begins with "-" and is neither "-" alone nor an integer. It
// is no "int" argument then, and no optional argument. A needed "string" may begin with "-", but it
// is no word that is a declared option ("-v", "--help"): the argument was forgotten. An attached
// argument is taken as it is. The options end at the first word that is none ("-" alone is none).
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "host/tstring.h"

namespace vistel::qdOS {

class GetOpt {
 public:
    // What matches no declared option has this index.
    static constexpr int noOption = -1;

    enum class Problem { none, unknownOption, missingArgument, unexpectedArgument };

    struct Result {
        int index = noOption;
        std::vector<Tstring> arguments;
        Problem problem = Problem::none;
        Tstring word;    // the word in which the option was found
        Tstring option;  // of a group of flags the one that is meant ("-x"); else the same as word
    };

    // Declares an option and returns its index: 0, 1, ... in the order of the calls.
    int addOption(std::string_view option, std::string_view argumentTypes);

    // The words of the command line without the program's name; copied.
    void initialize(int count, const char* const* words);

    // The next option; none at the end of the options. After a result with a problem the words that
    // remain have no meaning.
    std::optional<Result> getOpt();

    // The words that no option has consumed so far; a "--" at their head is not among them.
    std::vector<Tstring> remaining() const;

    static int getResultIndex(const Result& result) { return result.index; }
    // Argument n of a result; empty when it has no such argument.
    static Tstring getResultArg(const Result& result, int n);
    static int getNumArguments(const Result& result);

 private:
    struct Option {
        char shortName;
        Tstring longName;
        int needed, optional;        // numbers of arguments
        std::vector<bool> integers;  // which of the arguments are declared "int"
    };

    int findShort(char name) const;
    int findLong(std::string_view name) const;
    Result takeLong(const Tstring& word);
    Result takeShort(const Tstring& word);
    bool isDeclared(std::string_view word) const;
    bool mayBeArgument(const Tstring& word, bool integer) const;
    void takeArguments(Result& result, std::optional<Tstring> attached);
    void nextWord();

    std::vector<Option> options_;
    std::vector<Tstring> words_;
    size_t word_ = 0;    // the word being read
    size_t letter_ = 0;  // position within a group of flags; 0 at the start of a word
};

}  // namespace vistel::qdOS
