#include "app/usage.h"

#include <algorithm>
#include <cstdio>

#include "app/option_table.h"
#include "host/application.h"
#include "host/messages.h"
#include "platform/process.h"

namespace vistel {

namespace {

constexpr Message helpIds[] = {
    Message::rVTHelp1, Message::rVTHelp2, Message::rVTHelp3,
    Message::rVTHelp4, Message::rVTHelp5, Message::rVTHelp6,
};

// Exit statuses with which command interpreters say that there is no such program.
constexpr int notFoundStatuses[] = {126, 127, 9009};

Tstring optionSyntax(const OptionRow& row) {
    Tstring syntax = Tstring("  -") + row.shortName + ", --" + row.longName;
    if (*row.argumentNames) syntax += std::string(" ") + row.argumentNames;
    return syntax;
}

void write(const Tstring& text, FILE* stream) { std::fwrite(text.data(), 1, text.size(), stream); }

// False when there is no pager.
bool writeToPager(const Tstring& text) {
    std::fflush(stdout);
    FILE* pager = platform::openPipe("more", "w");
    if (!pager) return false;
    write(text, pager);
    const int status = platform::closePipe(pager);
    return std::ranges::find(notFoundStatuses, status) == std::end(notFoundStatuses);
}

}  // namespace

Tstring optionList() {
    size_t width = 0;
    for (const OptionRow& row : optionTable()) width = std::max(width, optionSyntax(row).size());
    Tstring list;
    for (const OptionRow& row : optionTable()) {
        Tstring syntax = optionSyntax(row);
        syntax.resize(width + 2, ' ');
        list += syntax + messageText(row.textId) + "\n";
    }
    return list;
}

Tstring bannerText() {
    const Tstring version = messageText(Message::rVTVistelVersionForWin) + applicationVersion();
    const Tstring description = messageText(Message::rVTVistelDescWin);
    return formatMessage(Message::rVTVistelUsage, {version, description}) + "\n";
}

Tstring usageText(const Tstring& programName) {
    const Tstring name = programName.substr(programName.find_last_of("/\\") + 1);
    return bannerText() + formatMessage(Message::rVTUsage, {name, optionList()}) +
           formatMessage(Message::rVTUsageCont, {name}) + "\n";
}

Tstring helpText() {
    Tstring text;
    for (const Message id : helpIds) text += messageText(id);
    return text;
}

void printUsage(const Tstring& programName, const Tstring& complaint) {
    write(usageText(programName), stderr);
    if (!complaint.empty()) write("\n" + complaint + "\n", stderr);
    std::fflush(stderr);
}

void printVersion() {
    write(bannerText(), stdout);
    std::fflush(stdout);
}

void printHelp() {
    const Tstring text = helpText();
    if (writeToPager(text)) return;
    write(text, stdout);
    std::fflush(stdout);
}

}  // namespace vistel
