// tlxpki asn1: prints the tree of elements of a file while it walks, so that a large file takes no memory.
#include <array>
#include <iostream>

#include "commands.hpp"
#include "document.hpp"
#include "element.hpp"
#include "element_text.hpp"
#include "failure.hpp"
#include "input.hpp"

namespace tool {

namespace {

constexpr unsigned kDeepest = 128;
/// The most OCTET STRINGs and BIT STRINGs within each other that the walk enters.
constexpr unsigned kMostEncapsulations = 4;

/// Prints the elements as lines of text, or as JSON objects with "children".
class Printer {
  public:
    virtual ~Printer() = default;
    virtual void begin_block(const Block &block) = 0;
    virtual void end_block() = 0;
    /// An element, whose children follow until close() when has_children is set.
    virtual void open(const Element &element, Octets octets, unsigned depth, bool has_children) = 0;
    virtual void close() = 0;
    virtual void broken(const BrokenElement &broken, Octets octets, unsigned depth) = 0;
};

/// The octets of a broken element's header.
Octets broken_header(const BrokenElement &broken, Octets octets) {
    const std::size_t left = octets.size() - std::min(broken.offset(), octets.size());
    return octets.subspan(octets.size() - left, std::min<std::size_t>(left, 6));
}

class TextPrinter : public Printer {
  public:
    explicit TextPrinter(bool full) : full_(full) {}

    void begin_block(const Block &block) override {
        if (!block.label.empty()) std::cout << "# " << printable(block.source + ": " + block.label) << '\n';
        std::cout << "  offset  header             length  element\n";
    }
    void end_block() override {}

    void open(const Element &element, Octets octets, unsigned depth, bool /*has_children*/) override {
        const std::string length = element.indefinite ? "indef" : std::to_string(element.length);
        begin_line(element.offset, octets.subspan(element.offset, element.header_length), length, depth);
        std::cout << tag_text(element);
        std::string value = value_text(element, octets, full_ ? octets.size() : kShortValue);
        if (!value.empty()) std::cout << "  " << value;
        std::cout << '\n';
    }
    void close() override {}

    void broken(const BrokenElement &broken, Octets octets, unsigned depth) override {
        begin_line(broken.offset(), broken_header(broken, octets), "?", depth);
        std::cout << "BROKEN: " << broken.what() << '\n';
    }

  private:
    static void begin_line(std::size_t offset, Octets header, const std::string &length, unsigned depth) {
        std::array<char, 128> line{};
        std::string digits;
        for (const uint8_t octet : header) {
            digits += (digits.empty() ? "" : " ") + hex({&octet, 1});
        }
        (void)std::snprintf(line.data(), line.size(), "%8zu  %-17s %7s  ", offset, digits.c_str(),
                            length.c_str());
        std::cout << line.data() << std::string(2 * std::size_t{depth}, ' ');
    }

    bool full_;
};

class JsonPrinter : public Printer {
  public:
    JsonPrinter() { std::cout << '['; }
    ~JsonPrinter() override { std::cout << "\n]\n"; }
    JsonPrinter(const JsonPrinter &) = delete;
    JsonPrinter &operator=(const JsonPrinter &) = delete;

    void begin_block(const Block &block) override {
        separate();
        std::cout << R"({"source": )" << dumped(block.source) << R"(, "label": )" << dumped(block.label)
                  << R"(, "elements": [)";
        first_ = true;
    }
    void end_block() override { end_list(); }

    void open(const Element &element, Octets octets, unsigned /*depth*/, bool has_children) override {
        separate();
        Json json = {{"offset", element.offset},
                     {"header", hex(octets.subspan(element.offset, element.header_length))},
                     {"length", element.indefinite ? Json("indefinite") : Json(element.length)},
                     {"tag", tag_text(element)}};
        add_value_json(json, element, octets);
        std::string text = dumped(json);
        if (has_children) {
            text.pop_back();
            text += R"(, "children": [)";
            first_ = true;
        }
        std::cout << text;
    }
    void close() override { end_list(); }

    void broken(const BrokenElement &broken, Octets octets, unsigned /*depth*/) override {
        separate();
        std::cout << dumped({{"offset", broken.offset()},
                             {"header", hex(broken_header(broken, octets))},
                             {"broken", broken.what()}});
    }

  private:
    static std::string dumped(const Json &json) {
        return json.dump(-1, ' ', false, Json::error_handler_t::replace);
    }
    void separate() {
        std::cout << (first_ ? "\n" : ",\n");
        first_ = false;
    }
    void end_list() {
        std::cout << "]}";
        first_ = false;
    }

    bool first_ = true;
};

class Walker {
  public:
    Walker(Octets octets, Printer &printer) : octets_(octets), printer_(printer) {}

    /// Walks the elements from an offset to end, or to the end-of-contents octets of an indefinite length.
    /// Returns the offset after them. The walk stops at a broken element; ok() is false then.
    std::size_t walk(std::size_t offset, std::size_t end, unsigned depth, unsigned encapsulations,
                     bool indefinite) {
        const std::size_t start = offset;
        while (offset < end && !broken_) {
            try {
                if (depth > kDeepest) {
                    throw BrokenElement(offset, "nested more than " + std::to_string(kDeepest) + " deep");
                }
                const Element element = read_element(octets_, offset, end);
                if (element.is_end_of_contents() && !indefinite) {
                    throw BrokenElement(offset, "end-of-contents octets where none belong");
                }
                offset = show(element, end, depth, encapsulations);
                if (element.is_end_of_contents() && indefinite) return offset;
            } catch (const BrokenElement &broken) {
                fail(broken, depth);
            }
        }
        if (indefinite && !broken_) {
            fail(BrokenElement(start, "its end-of-contents octets are missing"), depth);
        }
        return offset;
    }

    [[nodiscard]] bool ok() const { return !broken_; }
    [[nodiscard]] const std::string &complaint() const { return complaint_; }

  private:
    std::size_t show(const Element &element, std::size_t end, unsigned depth, unsigned encapsulations) {
        const std::size_t inner = encapsulated_at(element, encapsulations);
        const bool has_children = element.constructed || inner != 0;
        printer_.open(element, octets_, depth, has_children);
        std::size_t after = element.end();
        if (element.constructed) {
            after = walk(element.contents(), element.indefinite ? end : after, depth + 1, encapsulations,
                         element.indefinite);
        } else if (inner != 0) {
            walk(inner, after, depth + 1, encapsulations + 1, false);
        }
        if (has_children) printer_.close();
        return after;
    }

    /// The offset of a faultless SEQUENCE or SET that fills an OCTET STRING or BIT STRING; 0 when there is
    /// none.
    std::size_t encapsulated_at(const Element &element, unsigned encapsulations) const {
        const bool octet_string = element.is_universal(TLX_TAG_OCTET_STRING);
        const bool bit_string = element.is_universal(TLX_TAG_BIT_STRING);
        if (element.constructed || (!octet_string && !bit_string) || encapsulations >= kMostEncapsulations) {
            return 0;
        }
        const std::size_t inner = element.contents() + (bit_string ? 1 : 0);
        if (inner + 2 > element.end() || (bit_string && octets_[inner - 1] != 0)) return 0;
        if (octets_[inner] != TLX_TAG_SEQUENCE_OCTET && octets_[inner] != TLX_TAG_SET_OCTET) return 0;
        try {
            const Element first = read_element(octets_, inner, element.end());
            const bool fills = !first.indefinite && first.end() == element.end();
            return fills && is_sound(inner, element.end(), 0) ? inner : 0;
        } catch (const BrokenElement &) {
            return 0;
        }
    }

    /// Whether nothing is broken from an offset to end. An indefinite length is no DER.
    bool is_sound(std::size_t offset, std::size_t end, unsigned depth) const {
        while (offset < end) {
            const Element element = read_element(octets_, offset, end);
            if (element.indefinite || depth > kDeepest / 2) return false;
            if (element.constructed && !is_sound(element.contents(), element.end(), depth + 1)) return false;
            offset = element.end();
        }
        return true;
    }

    void fail(const BrokenElement &broken, unsigned depth) {
        broken_ = true;
        complaint_ = "broken element at offset " + std::to_string(broken.offset()) + ": " + broken.what();
        printer_.broken(broken, octets_, depth);
    }

    Octets octets_;
    Printer &printer_;
    bool broken_ = false;
    std::string complaint_;
};

/// Prints all blocks; throws Failure after the first that has a broken element.
void print_blocks(const Input &input, Printer &printer) {
    for (const Block &block : input.blocks()) {
        expect_contents(block);
        if (block.is_encrypted) throw Failure(block.source + ": the " + block.label + " is encrypted");
        printer.begin_block(block);
        Walker walker(block.octets, printer);
        walker.walk(0, block.octets.size(), 0, 0, false);
        printer.end_block();
        if (!walker.ok()) throw Failure(block.source + ": " + walker.complaint());
    }
}

}  // namespace

int run_asn1(const Asn1Options &options) {
    const Input input(options.file);
    if (options.json) {
        JsonPrinter printer;
        print_blocks(input, printer);
    } else {
        TextPrinter printer(options.full);
        print_blocks(input, printer);
    }
    return kGood;
}

}  // namespace tool
