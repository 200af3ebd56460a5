// A syntax structure as a test writes it down: element by element, each with its value, the record field it
// goes to, and what is reported when it cannot be read. From that follow the bits, the check of a parse, and
// the truncation sweep: the structure cut at every bit.

#ifndef TESTS_SUPPORT_SYNTAX_H
#define TESTS_SUPPORT_SYNTAX_H

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "bitbuffer.h"
#include "support/bit_string.h"
#include "support/silence.h"
#include "support/trace_capture.h"

namespace test {

// What a record is filled with before a parse: no syntax element of a test has this value.
constexpr unsigned char kPrefill = 0xA5;

template <typename Field>
Field PrefilledValue() {
    Field value;
    std::memset(&value, kPrefill, sizeof value);
    return value;
}

// The field of an element whose value the record does not keep.
constexpr int *kNotKept = nullptr;

class Syntax {
 public:
    // One element; `report` is the level-3 text when it cannot be read.
    template <typename Field>
    Syntax &U(unsigned int n, uint64_t value, Field *field, const std::string &report) {
        bits_.U(n, value);
        return Add(value, field, report);
    }
    template <typename Field>
    Syntax &Ue(uint64_t value, Field *field, const std::string &report) {
        bits_.Ue(value);
        return Add(value, field, report);
    }
    template <typename Field>
    Syntax &Se(int64_t value, Field *field, const std::string &report) {
        bits_.Se(value);
        return Add(value, field, report);
    }
    template <typename Field>
    Syntax &Flag(int value, Field *field, const std::string &report) {
        return U(1, static_cast<uint64_t>(value), field, report);
    }

    // Bits that no reader asks for (trailing bits, say): a cut in them does no harm.
    Syntax &Rest(const BitString &bits) {
        bits_.Append(bits);
        return *this;
    }

    // All elements that follow belong to a nested structure whose failure is reported once more, behind the
    // element's own text; the innermost is reported first.
    Syntax &Enter(const std::string &report) {
        outer_.push_back(report);
        return *this;
    }
    Syntax &Leave() {
        outer_.pop_back();
        return *this;
    }

    const BitString &bits() const { return bits_; }

    // Checks the fields of the elements that end within the first `length` bits, and that those of the others
    // still hold the prefill.
    void ExpectFields(size_t length) const {
        for (const Element &element : elements_)
            element.expect(element.end <= length);
    }

    // The reports, in order, when only the first `length` bits are there; none when they are enough.
    std::vector<std::string> ReportsWhenCut(size_t length) const {
        for (const Element &element : elements_) {
            if (element.end > length)
                return element.reports;
        }
        return {};
    }

    // Calls back with every number of bits of which one more completes an element, and with that of all bits.
    template <typename Cut>
    void ForEachCut(Cut cut) const {
        for (const Element &element : elements_)
            cut(element.end - 1);
        cut(bits_.size());
    }

    // Parses the structure cut at every bit, into a prefilled record: the right reports, the fields in front
    // of the cut read, the others untouched, nothing but the record written. The same with nobody listening,
    // cut within each element.
    template <typename Record, typename Parse>
    void SweepTruncations(Record *record, Parse parse) const {
        for (size_t length = 0; length <= bits_.size(); length++) {
            SCOPED_TRACE("cut at bit " + std::to_string(length));
            std::memset(record, kPrefill, sizeof *record);
            std::vector<unsigned char> bytes = bits_.Prefix(length).Bytes();
            bitbuffer_t bb{bytes.data(), 0, static_cast<unsigned int>(length)};
            const TraceCapture trace(3);
            const bool parsed = parse(&bb, record);
            const std::vector<std::string> reports = ReportsWhenCut(length);
            ASSERT_EQ(parsed, reports.empty());
            ASSERT_EQ(trace.Errors(), reports);
            ExpectFields(length);
            if (testing::Test::HasFailure())
                return;
        }
        ForEachCut([&](size_t length) {
            if (testing::Test::HasFailure())
                return;
            SCOPED_TRACE("cut at bit " + std::to_string(length));
            InSilence([&] {
                std::memset(record, kPrefill, sizeof *record);
                std::vector<unsigned char> bytes = bits_.Prefix(length).Bytes();
                bitbuffer_t bb{bytes.data(), 0, static_cast<unsigned int>(length)};
                EXPECT_EQ(parse(&bb, record), ReportsWhenCut(length).empty());
                ExpectFields(length);
            });
        });
    }

 private:
    struct Element {
        size_t end;
        std::vector<std::string> reports;
        std::function<void(bool read)> expect;
    };

    template <typename Value, typename Field>
    Syntax &Add(Value value, Field *field, const std::string &report) {
        Element element{bits_.size(), {report}, [](bool) {}};
        element.reports.insert(element.reports.end(), outer_.rbegin(), outer_.rend());
        if (field != nullptr)
            element.expect = [value, field, report](bool read) {
                const Field expected = read ? static_cast<Field>(value) : PrefilledValue<Field>();
                EXPECT_EQ(*field, expected) << report;
            };
        elements_.push_back(std::move(element));
        return *this;
    }

    BitString bits_;
    std::vector<Element> elements_;
    std::vector<std::string> outer_;
};

}  // namespace test

#endif
