// Words: how texts are cut into the words that a search finds. Texts are UTF-8; what is no UTF-8 counts byte
// by byte.
//
// A word is a run of letters and digits of any script, in lower case. Characters that scripts without blanks
// are written in, and emoji, are words by themselves: so each of them can be found.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

class WordCutter {
 public:
    explicit WordCutter(std::string_view text) : text_(text) {}

    // Goes to the next word; false when there is none.
    bool Next();

    // The word in lower case; valid until the next call. Never longer than kMaxWordBytes bytes: what is
    // longer is cut, in the search as in the texts.
    const std::string& Word() const { return word_; }
    // Where it stands in the text, in bytes.
    std::size_t Begin() const { return begin_; }
    std::size_t End() const { return end_; }

    static constexpr std::size_t kMaxWordBytes = 40;

 private:
    std::string_view text_;
    std::string word_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
};

// What is asked for: every word of the question must begin a word of the same line.
class Question {
 public:
    explicit Question(std::string_view text);

    const std::vector<std::string>& Words() const { return words_; }
    bool Empty() const { return words_.empty(); }

    // Where in a line the words stand that are asked for, as pairs of begin and end in bytes, in the order of
    // the line; empty when one of them is missing.
    struct Mark {
        std::size_t begin;
        std::size_t end;
    };
    std::vector<Mark> Find(std::string_view line) const;

 private:
    std::vector<std::string> words_;
};
