#include "UILayout.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <map>
#include <span>

#include <fmt/format.h>
#include <pugixml.hpp>

namespace corvane {

namespace {

/// Deeper than any layout that people could read, and harmless to a small stack.
constexpr int kMaximumNesting = 16;

/// An element of the script: what it becomes, and the attributes that it must and may have.
struct ElementRule {
    std::string_view name;
    WidgetKind kind;
    std::span<const std::string_view> required, optional;
    bool container = false;
};

constexpr std::array<std::string_view, 1> kText{"text"}, kID{"id"}, kTip{"tip"}, kFor{"for"};
constexpr std::array<std::string_view, 2> kIDAndText{"id", "text"}, kCheckboxOptions{"checked", "tip"},
    kButtonOptions{"swatch", "tip"};
constexpr std::array<std::string_view, 3> kTextButtonOptions{"text", "swatch", "tip"};
constexpr std::array<std::string_view, 6> kNumberOptions{"unit", "min", "max", "step", "decimals", "tip"};

constexpr ElementRule kElements[] = {
    {"group", WidgetKind::kGroup, kText, {}, true},
    {"row", WidgetKind::kRow, {}, {}, true},
    {"label", WidgetKind::kLabel, kText, kFor},
    {"popup", WidgetKind::kPopup, kID, kTip},
    {"number", WidgetKind::kNumber, kID, kNumberOptions},
    {"checkbox", WidgetKind::kCheckbox, kIDAndText, kCheckboxOptions},
    {"button", WidgetKind::kButton, kIDAndText, kButtonOptions},
    {"textbutton", WidgetKind::kTextButton, kID, kTextButtonOptions},
    {"statictext", WidgetKind::kStaticText, kID, kText},
};

constexpr std::array<std::string_view, 3> kDialogAttributes{"title", "default", "cancel"};

bool Contains(std::span<const std::string_view> names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// Splits a text at its mnemonic mark; a doubled mark is an underscore.
LabelText SplitMnemonic(const Mosk::String& marked) {
    LabelText label;
    for (std::size_t i = 0; i < marked.size(); ++i) {
        if (marked[i] == u'_' && i + 1 < marked.size()) {
            ++i;
            if (marked[i] != u'_') label.mnemonic = label.text.size();
        }
        label.text += marked[i];
    }
    return label;
}

/// Reads one script. Every check throws with the line it looked at.
class LayoutReader {
  public:
    LayoutReader(std::string_view script, const Mosk::String& name) : mScript(script), mName(name) {}

    Layout Read();

  private:
    /// An attribute that names a control, checked when all controls are known.
    struct Reference {
        pugi::xml_node element;
        std::string attribute, id;
        bool (*fits)(WidgetKind);
        const char* expected;
    };

    [[noreturn]] void Fail(std::ptrdiff_t offset, std::string_view expected, std::string_view found) const;
    [[noreturn]] void Fail(pugi::xml_node node, std::string_view expected, std::string_view found) const {
        Fail(node.offset_debug(), expected, found);
    }

    pugi::xml_node LoadDialog();
    void CheckAttributes(pugi::xml_node element, std::span<const std::string_view> required,
                         std::span<const std::string_view> optional) const;
    std::vector<LayoutNode> ReadChildren(pugi::xml_node parent, int depth);
    LayoutNode ReadElement(pugi::xml_node element, int depth);
    void ReadID(pugi::xml_node element, LayoutNode& node);
    void ReadLimits(pugi::xml_node element, NumberLimits& limits) const;
    void ReadSwatch(pugi::xml_node element, LayoutNode& node);
    std::optional<double> ReadNumber(pugi::xml_node element, const char* attribute) const;
    Mosk::String ReadText(pugi::xml_node element, const char* attribute) const;
    std::string ReadButton(pugi::xml_node dialog, const char* attribute);
    void CheckReferences() const;

    std::string_view mScript;
    const Mosk::String& mName;
    pugi::xml_document mDocument;
    std::map<std::string, WidgetKind> mKinds;
    std::vector<Reference> mReferences;
};

void LayoutReader::Fail(std::ptrdiff_t offset, std::string_view expected, std::string_view found) const {
    const auto end = mScript.begin() + std::clamp<std::ptrdiff_t>(offset, 0, std::ssize(mScript));
    const auto line = 1 + std::count(mScript.begin(), end, '\n');
    throw LayoutError(
        fmt::format("layout {}, line {}: expected {}, found {}", Mosk::ToUTF8(mName), line, expected, found));
}

Layout LayoutReader::Read() {
    const pugi::xml_node dialog = LoadDialog();
    CheckAttributes(dialog, kDialogAttributes, {});
    Layout layout;
    layout.name = mName;
    layout.title = ReadText(dialog, "title");
    layout.defaultButton = ReadButton(dialog, "default");
    layout.cancelButton = ReadButton(dialog, "cancel");
    layout.children = ReadChildren(dialog, 1);
    CheckReferences();
    return layout;
}

/// Reads the XML. The library is lenient about what surrounds the document; this is not.
pugi::xml_node LayoutReader::LoadDialog() {
    if (const auto zero = mScript.find('\0'); zero != mScript.npos)
        Fail(static_cast<std::ptrdiff_t>(zero), "text", "a zero byte");
    constexpr unsigned int kOptions = pugi::parse_default | pugi::parse_fragment | pugi::parse_doctype;
    const auto result = mDocument.load_buffer(mScript.data(), mScript.size(), kOptions, pugi::encoding_utf8);
    if (!result) Fail(result.offset, "well-formed XML", fmt::format("a problem: {}", result.description()));
    pugi::xml_node dialog;
    for (const pugi::xml_node node : mDocument.children()) {
        const bool element = node.type() == pugi::node_element;
        if (!element || dialog || std::string_view(node.name()) != "dialog")
            Fail(node, "one <dialog> and nothing beside it",
                 element ? fmt::format("<{}>", node.name()) : "text");
        dialog = node;
    }
    if (!dialog) Fail(0, "a <dialog>", "none");
    return dialog;
}

void LayoutReader::CheckAttributes(pugi::xml_node element, std::span<const std::string_view> required,
                                   std::span<const std::string_view> optional) const {
    std::vector<std::string_view> seen;
    for (const pugi::xml_attribute attribute : element.attributes()) {
        const std::string_view name = attribute.name();
        if (!Contains(required, name) && !Contains(optional, name))
            Fail(element, fmt::format("an attribute that <{}> has", element.name()),
                 fmt::format("\"{}\"", name));
        if (Contains(seen, name)) Fail(element, "each attribute once", fmt::format("\"{}\" twice", name));
        seen.push_back(name);
    }
    for (const std::string_view name : required)
        if (!Contains(seen, name))
            Fail(element, fmt::format("the attribute \"{}\"", name),
                 fmt::format("<{}> without it", element.name()));
}

std::vector<LayoutNode> LayoutReader::ReadChildren(pugi::xml_node parent, int depth) {
    if (depth > kMaximumNesting)
        Fail(parent, fmt::format("at most {} levels", kMaximumNesting), "a deeper one");
    std::vector<LayoutNode> children;
    for (const pugi::xml_node child : parent.children()) {
        if (child.type() != pugi::node_element)
            Fail(child, fmt::format("elements in <{}>", parent.name()), fmt::format("\"{}\"", child.value()));
        children.push_back(ReadElement(child, depth));
    }
    return children;
}

LayoutNode LayoutReader::ReadElement(pugi::xml_node element, int depth) {
    const std::string_view name = element.name();
    const auto* const rule = std::ranges::find(kElements, name, &ElementRule::name);
    if (rule == std::end(kElements))
        Fail(element, "an element of the layout script", fmt::format("<{}>", name));
    CheckAttributes(element, rule->required, rule->optional);

    LayoutNode node;
    node.kind = rule->kind;
    if (node.IsControl()) ReadID(element, node);
    node.label = SplitMnemonic(ReadText(element, "text"));
    node.tip = ReadText(element, "tip");
    node.unit = ReadText(element, "unit");
    if (node.kind == WidgetKind::kNumber) ReadLimits(element, node.limits);
    if (IsButton(node.kind)) ReadSwatch(element, node);
    if (const auto checked = element.attribute("checked")) {
        const std::string_view value = checked.value();
        if (value != "true" && value != "false")
            Fail(element, "\"true\" or \"false\" in \"checked\"", fmt::format("\"{}\"", value));
        node.checked = value == "true";
    }
    if (const auto target = element.attribute("for")) {
        node.target = target.value();
        mReferences.push_back(
            {element, "for", node.target, [](WidgetKind) { return true; }, "a control's id"});
    }
    if (rule->container)
        node.children = ReadChildren(element, depth + 1);
    else if (element.first_child())
        Fail(element, fmt::format("nothing in <{}>", name), "content");
    return node;
}

void LayoutReader::ReadID(pugi::xml_node element, LayoutNode& node) {
    node.id = element.attribute("id").value();
    if (node.id.empty()) Fail(element, "an id", "an empty one");
    if (!mKinds.emplace(node.id, node.kind).second)
        Fail(element, "each id once", fmt::format("\"{}\" twice", node.id));
}

void LayoutReader::ReadLimits(pugi::xml_node element, NumberLimits& limits) const {
    limits.minimum = ReadNumber(element, "min");
    limits.maximum = ReadNumber(element, "max");
    if (limits.minimum && limits.maximum && *limits.minimum > *limits.maximum)
        Fail(element, "\"min\" at most \"max\"", fmt::format("{} and {}", *limits.minimum, *limits.maximum));
    limits.step = ReadNumber(element, "step").value_or(limits.step);
    if (!(limits.step > 0)) Fail(element, "a \"step\" above 0", fmt::format("{}", limits.step));
    const double decimals = ReadNumber(element, "decimals").value_or(limits.decimals);
    if (!(decimals >= 0 && decimals <= 15) || decimals != std::floor(decimals))
        Fail(element, "\"decimals\" from 0 to 15", fmt::format("{}", decimals));
    limits.decimals = static_cast<int>(decimals);
}

void LayoutReader::ReadSwatch(pugi::xml_node element, LayoutNode& node) {
    const auto attribute = element.attribute("swatch");
    if (!attribute) return;
    std::string_view rest = attribute.value();
    while (!rest.empty()) {
        const std::size_t comma = std::min(rest.find(','), rest.size());
        node.swatch.emplace_back(rest.substr(0, comma));
        rest.remove_prefix(std::min(comma + 1, rest.size()));
        mReferences.push_back({element, "swatch", node.swatch.back(),
                               [](WidgetKind kind) { return kind == WidgetKind::kNumber; }, "a number's id"});
    }
    if (node.swatch.size() != 4)
        Fail(element, "four numbers in \"swatch\"", fmt::format("\"{}\"", attribute.value()));
}

std::optional<double> LayoutReader::ReadNumber(pugi::xml_node element, const char* attribute) const {
    const auto found = element.attribute(attribute);
    if (!found) return std::nullopt;
    const auto value = ParseFiniteNumber(found.value());
    if (!value)
        Fail(element, fmt::format("a number in \"{}\"", attribute), fmt::format("\"{}\"", found.value()));
    return value;
}

Mosk::String LayoutReader::ReadText(pugi::xml_node element, const char* attribute) const {
    try {
        return Mosk::FromUTF8(element.attribute(attribute).value());
    } catch (const std::invalid_argument&) {
        Fail(element, fmt::format("UTF-8 in \"{}\"", attribute), "other bytes");
    }
}

std::string LayoutReader::ReadButton(pugi::xml_node dialog, const char* attribute) {
    std::string id = dialog.attribute(attribute).value();
    mReferences.push_back({dialog, attribute, id, &IsButton, "a button's id"});
    return id;
}

void LayoutReader::CheckReferences() const {
    for (const Reference& reference : mReferences) {
        const auto found = mKinds.find(reference.id);
        if (found == mKinds.end() || !reference.fits(found->second))
            Fail(reference.element, fmt::format("{} in \"{}\"", reference.expected, reference.attribute),
                 fmt::format("\"{}\"", reference.id));
    }
}

} // namespace

std::optional<double> ParseFiniteNumber(std::string_view text) {
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(number))
        return std::nullopt;
    return number;
}

double NumberLimits::Hold(double value) const {
    if (decimals == 0) value = std::round(value);
    if (minimum && value < *minimum) return *minimum;
    if (maximum && value > *maximum) return *maximum;
    return value;
}

Layout ParseLayout(std::string_view script, const Mosk::String& name) {
    return LayoutReader(script, name).Read();
}

} // namespace corvane
