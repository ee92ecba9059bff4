#include "Passes.h"

#include "../document/ElementRules.h"
#include "../document/Numbers.h"
#include "../document/Tree.h"

#include <algorithm>
#include <vector>

namespace libPrepare {

namespace {

bool isBlankText(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), isBlank);
}

// Whether a reader that only takes the last plain run of a text would miss something.
bool isDivided(pugi::xml_node element)
{
    unsigned runs = 0;
    bool hasCharacterData = false;
    for (const pugi::xml_node child : element.children()) {
        if (child.type() == pugi::node_element) {
            return false;
        }
        if (child.type() == pugi::node_pcdata && !isBlankText(child.value())) {
            ++runs;
        }
        hasCharacterData = hasCharacterData || (child.type() == pugi::node_cdata && !isBlankText(child.value()));
    }
    return runs > 1 || hasCharacterData;
}

// Whether an element contains only a text in one run.
bool hasOneText(pugi::xml_node element)
{
    const pugi::xml_node child = element.first_child();
    return child.type() == pugi::node_pcdata && !child.next_sibling();
}

// Comments and processing instructions stay, after the text.
void join(pugi::xml_node element)
{
    const std::string text = textOf(element);
    for (pugi::xml_node child = element.first_child(); child;) {
        const pugi::xml_node after = child.next_sibling();
        if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) {
            element.remove_child(child);
        }
        child = after;
    }
    element.prepend_child(pugi::node_pcdata).set_value(text.c_str());
}

void joinIfDivided(Document& document, pugi::xml_node element)
{
    if (isDivided(element)) {
        document.rewritten(element, "divided-text", "The text is divided by comments, or is character data.", "joined");
        join(element);
    }
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// Whether a word is a number except for its comma: -0,5 or 1,5e-3.
bool isCommaNumber(std::string_view word)
{
    const std::size_t comma = word.find(',');
    if (comma == std::string_view::npos || word.find(',', comma + 1) != std::string_view::npos ||
        word.find('.') != std::string_view::npos) {
        return false;
    }
    const std::size_t first = word.front() == '-' || word.front() == '+' ? 1 : 0;
    std::size_t end = comma + 1;
    while (end < word.size() && isDigit(word[end])) {
        ++end;
    }
    const bool hasDigits = comma > first && end > comma + 1 &&
                           std::all_of(word.begin() + static_cast<std::ptrdiff_t>(first),
                                       word.begin() + static_cast<std::ptrdiff_t>(comma), isDigit);
    if (!hasDigits || end == word.size()) {
        return hasDigits;
    }
    if (word[end] != 'e' && word[end] != 'E') {
        return false;
    }
    end += end + 1 < word.size() && (word[end + 1] == '-' || word[end + 1] == '+') ? 2 : 1;
    return end < word.size() && std::all_of(word.begin() + static_cast<std::ptrdiff_t>(end), word.end(), isDigit);
}

// Whether commas divide the numbers of a word, as in "0," and "0,1.5,2". "1,5," may be one number or two.
bool isCommaList(std::string_view word)
{
    const auto commas = std::count(word.begin(), word.end(), ',');
    const bool isLast = word.back() == ',';
    const bool isOpen = commas == 2 && isLast && word.find('.') == std::string_view::npos;
    const bool areSeveral = commas > 1 || isLast || word.find('.') != std::string_view::npos;
    return areSeveral && !isOpen && word.front() != ',' &&
           word.find_first_not_of("0123456789+-.,eE") == std::string_view::npos;
}

// @return how many commas became points or blanks
std::size_t repairCommas(std::string& text)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(','); at != std::string::npos; at = text.find(',', at + 1)) {
        std::size_t begin = at;
        while (begin > 0 && !isBlank(text[begin - 1])) {
            --begin;
        }
        std::size_t end = at;
        while (end < text.size() && !isBlank(text[end])) {
            ++end;
        }
        const std::string_view word = std::string_view(text).substr(begin, end - begin);
        if (isCommaNumber(word)) {
            text[at] = '.';
            ++count;
        } else if (isCommaList(word)) {
            count += static_cast<std::size_t>(std::count(word.begin(), word.end(), ','));
            std::replace(text.begin() + static_cast<std::ptrdiff_t>(begin),
                         text.begin() + static_cast<std::ptrdiff_t>(end), ',', ' ');
        }
        at = end == text.size() ? end - 1 : end;
    }
    return count;
}

void repairNumbers(Document& document, pugi::xml_node element)
{
    std::string scratch;
    if (textOf(element, scratch).find(',') == std::string_view::npos) {
        return;
    }
    std::string text = textOf(element);
    if (const std::size_t count = repairCommas(text)) {
        setText(element, text);
        document.rewritten(
            element, "decimal-comma",
            "Numbers have a comma in the place of the decimal point, or between them: " + std::to_string(count) + ".",
            "made points and blanks");
    }
}

void takeOut(Document& document, pugi::xml_node element)
{
    const pugi::xml_node parent = element.parent();
    document.lost(element, "stray-element",
                  std::string("There can be no <") + element.name() + "> in a <" + parent.name() + ">.",
                  "It was taken out.");
    document.report().changed = true;
    document.forgetIds();
    discard(element);
}

// Elements inside a value are not part of it, and nothing can refer to them.
void takeStrangersOut(Document& document, pugi::xml_node element)
{
    for (pugi::xml_node child = element.first_child(); child;) {
        const pugi::xml_node after = child.next_sibling();
        if (child.type() == pugi::node_element) {
            takeOut(document, child);
        }
        child = after;
    }
}

bool holdsId(pugi::xml_node subtree)
{
    for (pugi::xml_node element = subtree; element; element = next(element, subtree)) {
        if (element.attribute("id")) {
            return true;
        }
    }
    return false;
}

} // namespace

void repairTexts(Document& document)
{
    if (!document.census().hasOddTexts) {
        return; // the usual case
    }
    const pugi::xml_node root = document.root();
    const std::size_t findings = document.report().findings.size();
    std::vector<pugi::xml_node> relieved; // of elements that were taken out
    for (pugi::xml_node node = root; node;) {
        const char* const name = node.name(); // empty if it is no element
        if (*name == '\0' || isForeign(name) || node.type() != pugi::node_element) {
            node = nextBeside(node, root);
            continue;
        }
        const ElementTraits traits = traitsOf(name);
        if (node != root && !canHold(node.parent(), name, traits) && holdsId(node)) {
            const pugi::xml_node following = nextBeside(node, root);
            relieved.push_back(node.parent());
            takeOut(document, node);
            node = following;
            continue;
        }
        if (hasOneText(node) && !is(node, "unit")) {
            if (traits.holdsNumbers) {
                repairNumbers(document, node);
            }
            node = nextBeside(node, root);
            continue;
        }
        if (traits.holdsOnlyValue) {
            takeStrangersOut(document, node);
        }
        joinIfDivided(document, node);
        if (traits.holdsNumbers) {
            repairNumbers(document, node);
        } else if (is(node, "unit")) {
            std::string meter = node.attribute("meter").value();
            if (repairCommas(meter) > 0) {
                setAttribute(node, "meter", meter);
                document.rewritten(node, "decimal-comma", "The unit has a comma in the place of the decimal point.",
                                   "made a point");
            }
        }
        node = next(node, root);
    }
    for (const pugi::xml_node element : relieved) {
        joinIfDivided(document, element);
    }
    if (document.report().findings.size() != findings) {
        document.forgetCensus();
    }
}

} // namespace libPrepare
