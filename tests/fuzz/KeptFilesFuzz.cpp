// What is kept in files and may have been changed there, and the lists and messages that servers send: a byte
// that chooses, then the bytes to be read.
#include <cstdint>

#include "base/RuntimeError.h"
#include "features/buddies/BuddyList.h"
#include "features/waiting/ImFrames.h"
#include "features/waiting/WaitingMessages.h"
#include "tests/fuzz/Check.h"

namespace {

void PutBack(const BuddyList& wanted, const BuddyList& present) {
    auto missing = Missing(wanted, present);
    auto then = present;
    then.insert(then.end(), missing.begin(), missing.end());
    Check(Missing(wanted, then).empty(), "putting back twice adds nothing twice");
    for (const auto& line : Differences(present, then))
        Check(line[0] == '+', "nothing is changed or deleted");
    Regrouped(present, missing);
}

void ReadOne(std::uint8_t choice, std::string_view bytes) {
    switch (choice % 4) {
        case 0: {
            const auto messages = ReadWaiting(bytes);
            for (const auto& message : messages) {
                Check(CanWait(message.data), "only what could be kept is sent");
                TextOf(message);
            }
            Check(WaitingBytes(ReadWaiting(WaitingBytes(messages))) == WaitingBytes(messages),
                  "the same again");
            break;
        }
        case 1: {
            const auto list = ListFromText(bytes);
            Check(ListFromText(TextOf(list, "again")) == list, "a text holds the whole list");
            CsvOf(list);
            HtmlOf(list, "again");
            PutBack(list, {});
            break;
        }
        case 2: {
            BuddyList list;
            AppendItems(list, bytes);
            Check(Missing(list, list).empty(), "nothing is missing in itself");
            Check(Differences(list, list).empty(), "a list is as it is");
            PutBack({{"Fred", 1, 1, BuddyItem::Buddy, ""}}, list);
            break;
        }
        default:
            if (bytes.size() < 10) return;
            SentAt(bytes);
            const auto shown = WithTextInFront(bytes, "[Tue 21:14] ");
            Check(shown.size() <= bytes.size() + 24, "no more than the text is put in front");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size == 0) return 0;
    try {
        ReadOne(bytes[0], {reinterpret_cast<const char*>(bytes) + 1, size - 1});
    } catch (const RuntimeError&) {
        // The one way in which bytes may be refused.
    }
    return 0;
}
