#include "app/option_table.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "host/application.h"
#include "host/messages.h"
#include "platform/process.h"
#include "resources/command_ids.h"
#include "viewer/viewer_state.h"

namespace vistel {

namespace {

// -B, -S ...: sets one field of the state to a fixed value.
template <auto field, int32_t value = 1>
void set(OptionUse&) {
    viewerState.*field = value;
}

// -s, -m: a whole number between these.
template <auto field, int32_t least, int32_t most, Message needed>
void setFactor(OptionUse& use) {
    const Tstring word = use.argument(0);
    viewerState.*field = std::clamp(word.asInt32(), least, most);
    if (!word.isInt32() || viewerState.*field != word.asInt32())
        tellOddWord(use.option(), word, needed, std::to_string(viewerState.*field));
}

template <auto field>
void setName(OptionUse& use) {
    viewerState.*field = use.argument(0);
}

void showBox(const OptionUse& use, const Tstring& text) {
    callIfSet(use.services.showMessageBox, applicationName(), text);
}

// Sets a variable of the environment from a text "NAME=value".
void tavoPutEnv(const Tstring& assignment) {
    const size_t equals = assignment.find('=');
    if (equals != Tstring::npos)
        platform::setEnvironmentVariable(assignment.substr(0, equals),
                                         assignment.substr(equals + 1));
}

void setPluginGamma(OptionUse& use) {
    (void)use.real(0);  // told when it is none
    tavoPutEnv(formatMessage(Message::rVTRlaGamma, {use.argument(0).asDouble()}));
}

void refuseStereo(OptionUse& use) { showBox(use, messageText(Message::rVTNoStereo)); }

void refuseCrop(OptionUse& use) { showBox(use, messageText(Message::rVTCropFilterNoSupport)); }

void refuseResolution(OptionUse& use) { showBox(use, messageText(Message::rVTResNoSupport)); }

void setFilmLog(OptionUse&) {
    viewerState.lutActive = 1;
    viewerState.cineonLog = 1;
}

// The option is declared without an argument: what is read is the absent one.
void setSequenceDelay(OptionUse& use) {
    viewerState.sequenceDelay = std::max(use.argument(0).asInt32(), 0);
}

void setFullResolution(OptionUse& use) {
    viewerState.noRescale = 1;
    callIfSet(use.services.checkMenuItem, COMMAND_FULL_RESOLUTION, true);
}

void keepPlayFormat(OptionUse& use) { use.line.playFormat = use.argument(0); }

void wantHelp(OptionUse& use) { use.line.outcome = StartUpOutcome::helpWanted; }

void setGamma(OptionUse& use) { viewerState.defGamma = use.real(0); }

void setMemoryFactor(OptionUse& use) { viewerState.kmem = use.real(0) * 0.9f; }

void setMaxLevel(OptionUse& use) {
    const Tstring word = use.argument(0);
    viewerState.maxLevel = word.asUInt32();
    if (!word.isUInt32())
        tellOddWord(use.option(), word, Message::rVTWholeNumber,
                    std::to_string(viewerState.maxLevel));
}

void setRange(OptionUse& use) {
    use.line.range = {use.wholeNumber(0), use.wholeNumber(1), use.wholeNumber(2)};
    use.line.rangeGiven = true;
    viewerState.firstFrame = viewerState.currentFrame = use.line.range.start;
    viewerState.lastFrame = use.line.range.end;
    viewerState.frameStep = use.line.range.step;
    viewerState.animation = 1;
    viewerState.inter = 1;
}

// The word after the sound file is its offset, or, when it is no integer, the first file. A "--"
// that followed that word is moved before it.
void giveBackFileWord(CommandLine& line) {
    --line.firstFile;
    if (line.words[line.firstFile] == "--")
        std::swap(line.words[line.firstFile], line.words[line.firstFile - 1]);
}

// A file word that is given back counts as the first file only when no option follows: the index is
// computed anew after each option.
void setSound(OptionUse& use) {
    viewerState.audioFile = use.argument(0);
    if (qdOS::GetOpt::getNumArguments(use.result) > 1) {
        if (use.argument(1).isInt32())
            viewerState.audioOffset = use.argument(1).asInt32();
        else
            giveBackFileWord(use.line);
    }
    if (viewerState.audioFile.empty()) return;
    viewerState.soundOn = 1;
    callIfSet(use.services.openSoundTrack);
}

using S = ViewerState;

constexpr auto setShrink = setFactor<&S::rfact, 1, INT32_MAX, Message::rVTNumberFrom1>;
constexpr auto setZoom = setFactor<&S::magnify, 1, 8, Message::rVTNumberFrom1To8>;

// clang-format off
constexpr OptionRow rows[] = {
    {'G', "gamma",       "string",          "<gamma>",                 setPluginGamma,          Message::rVTOptGamma},
    {'B', "nowinborder", "",                "",                        set<&S::noWinBorder>,    Message::rVTOptNoWinBorder},
    {'D', "stereomode",  "",                "",                        refuseStereo,            Message::rVTOptStereoMode},
    {'C', "cropfilter",  "int int int int", "<x1> <y1> <x2> <y2>",     refuseCrop,              Message::rVTOptCropFilter},
    {'K', "docin",       "",                "",                        setFilmLog,              Message::rVTOptDoCin},
    {'S', "sequence",    "",                "",                        set<&S::sequenceMode>,   Message::rVTOptSequence},
    {'T', "sequencet",   "",                "",                        setSequenceDelay,        Message::rVTOptSequenceT},
    {'f', "findfirst",   "",                "",                        set<&S::findFirst>,      Message::rVTOptFindFirst},
    {'F', "norescale",   "",                "",                        setFullResolution,       Message::rVTOptNoRescale},
    {'R', "res",         "string",          "<resolution>",            refuseResolution,        Message::rVTOptRes},
    {'r', "playformat",  "string",          "film|pal|ntsc|<rate>",    keepPlayFormat,          Message::rVTOptPlayFormat},
    {'a', "showall",     "",                "",                        set<&S::showAll>,        Message::rVTOptShowAll},
    {'d', "demo",        "",                "",                        set<&S::fullScreen>,     Message::rVTOptDemo},
    {'e', "histo",       "",                "",                        set<&S::histogram>,      Message::rVTOptHisto},
    {'h', "help",        "",                "",                        wantHelp,                Message::rVTOptHelp},
    {'p', "padnum",      "",                "",                        set<&S::padNum>,         Message::rVTOptPadNum},
    {'c', "inter",       "",                "",                        set<&S::inter, 0>,       Message::rVTOptInter},
    {'v', "verbose",     "",                "",                        set<&S::verbose>,        Message::rVTOptVerbose},
    // Despite its name, "zon" switches the depth planes off.
    {'z', "zon",         "",                "",                        set<&S::loadZ, 0>,       Message::rVTOptZon},
    {'Z', "forcezon",    "",                "",                        set<&S::forceZ>,         Message::rVTOptForceZon},
    {'w', "synchro",     "",                "",                        set<&S::synchro>,        Message::rVTOptSynchro},
    {'g', "defgamma",    "string",          "<gamma>",                 setGamma,                Message::rVTOptDefGamma},
    {'k', "kmem",        "string",          "<factor>",                setMemoryFactor,         Message::rVTOptKmem},
    {'s', "rfact",       "int",             "<factor>",                setShrink,               Message::rVTOptRfact},
    {'m', "magnify",     "int",             "<factor>",                setZoom,                 Message::rVTOptMagnify},
    {'l', "maxlevel",    "int",             "<level>",                 setMaxLevel,             Message::rVTOptMaxLevel},
    {'W', "work",        "string",          "<folder>",                setName<&S::workDir>,    Message::rVTOptWork},
    {'P', "project",     "string",          "<name>",                  setName<&S::projectName>, Message::rVTOptProject},
    {'t', "test",        "",                "",                        set<&S::testMode>,       Message::rVTOptTest},
    {'N', "onefile",     "",                "",                        set<&S::oneFile>,        Message::rVTOptOneFile},
    {'n', "animation",   "int int int",     "<start> <end> <step>",    setRange,                Message::rVTOptAnimation},
    {'u', "audiofile",   "string ? string", "<sound file> [<frame>]",  setSound,                Message::rVTOptAudioFile},
};
// clang-format on
static_assert(std::size(rows) == 32);

// It has no row: it ends the program as the help does, and sets nothing.
constexpr std::string_view versionOption = "--version";

// Of a group of flags the letter that is meant, with the group.
Tstring nameOfOption(const qdOS::GetOpt::Result& result) {
    if (result.option == result.word) return result.word;
    return formatMessage(Message::rVTOptionInGroup, {result.option, result.word});
}

Tstring complaintAbout(const qdOS::GetOpt::Result& result) {
    using Problem = qdOS::GetOpt::Problem;
    const Tstring option = nameOfOption(result);
    if (result.problem == Problem::missingArgument)
        return formatMessage(Message::rVTMissingArgument, {option});
    if (result.problem == Problem::unexpectedArgument)
        return formatMessage(Message::rVTUnexpectedArgument, {option});
    return formatMessage(Message::rVTUnknownOption, {option});
}

}  // namespace

void tellOddWord(const Tstring& option, const Tstring& word, Message needed, const Tstring& used) {
    printError(formatMessage(Message::rVTOptionWord, {option, word, messageText(needed), used}));
}

int32_t wholeNumber(const Tstring& option, const Tstring& word) {
    const int32_t number = word.asInt32();
    if (!word.isInt32()) tellOddWord(option, word, Message::rVTWholeNumber, std::to_string(number));
    return number;
}

float OptionUse::real(int n) const {
    const Tstring word = argument(n);
    if (!word.isReal()) {
        const FormatArgument used(word.asDouble());
        tellOddWord(option(), word, Message::rVTNumber, used.text());
    }
    return word.asFloat();
}

std::span<const OptionRow> optionTable() { return rows; }

void parseOptions(CommandLine& line, const StartUpServices& services) {
    qdOS::GetOpt parser;
    for (const OptionRow& row : rows) {
        const Tstring option = Tstring(1, row.shortName) + "|" + row.longName;
        parser.addOption(option, row.argumentTypes);
    }

    std::vector<const char*> words;
    for (size_t i = 1; i < line.words.size(); ++i) words.push_back(line.words[i].c_str());
    parser.initialize(static_cast<int>(words.size()), words.data());

    line.firstFile = line.words.size() - parser.remaining().size();
    while (auto result = parser.getOpt()) {
        const int index = qdOS::GetOpt::getResultIndex(*result);
        if (index == qdOS::GetOpt::noOption && result->word == versionOption) {
            line.outcome = StartUpOutcome::versionWanted;
            return;
        }
        if (index == qdOS::GetOpt::noOption) {
            line.outcome = StartUpOutcome::usageWanted;
            line.complaint = complaintAbout(*result);
            return;
        }
        line.firstFile = line.words.size() - parser.remaining().size();
        OptionUse use{rows[index].shortName, std::move(*result), line, services};
        rows[index].apply(use);
        if (line.outcome != StartUpOutcome::goOn) return;
    }
}

}  // namespace vistel
