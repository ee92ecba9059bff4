#include "DocumentFolder.h"

#include "support/CrashReport.h"
#include "support/DocumentChange.h"
#include "support/DocumentTree.h"
#include "support/Rows.h"
#include "support/TortureFolder.h"
#include "support/Words.h"

#include <libVideo/ColladaDom.h>
#include <libVideo/SceneGraph/document/ColladaReader.h>
#include <libVideo/SceneGraph/document/ModelAccess.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

// The library's reader makes the same tree as the document model's own reader, with the same warnings, unless it
// refuses the document.

namespace {

using documents::StoredDocument;
using libVideo::detail::ColladaReader;
using libVideo::detail::ModelPartAccess;
using namespace testSupport;

class Readers;

class ReaderTest : public testing::Test {
protected:
    ReaderTest();
    ~ReaderTest() override;
    // @return whether the library's reader opens the text
    bool expectSame(const std::string& text, const std::string& words);

private:
    CrashReport m_report{600};
    TortureFolder m_folder;
    std::unique_ptr<Readers> m_readers;
};

std::string collada(const std::string& body)
{
    return "<COLLADA xmlns='http://www.collada.org/2005/11/COLLADASchema' version='1.4.1'>" + body + "</COLLADA>";
}

struct BodyCase : testSupport::Row {
    const char* body;
};

class ReaderRowTest : public ReaderTest, public testing::WithParamInterface<BodyCase> {};

TEST_P(ReaderRowTest, MakesTheTreeOfTheDocumentModel)
{
    EXPECT_TRUE(expectSame(collada(GetParam().body), GetParam().body));
}

// Keeps the warnings without line numbers, because the parser may have read further by then.
class WarningCapture : public daeErrorHandler {
public:
    WarningCapture() { setErrorHandler(this); }
    ~WarningCapture() override { setErrorHandler(nullptr); }
    void handleError(daeString /*message*/) override {}
    void handleWarning(daeString message) override
    {
        const std::string text = message;
        const std::size_t line = text.rfind(" at line ");
        if (line == std::string::npos) {
            m_parserText += text; // by the parser, which is ahead by some elements
        } else {
            m_text += text.substr(0, line) + text.substr(text.find('.', line));
        }
    }
    std::string take() { return std::exchange(m_text, {}) + std::exchange(m_parserText, {}); }

private:
    std::string m_text;
    std::string m_parserText;
};

struct Reading {
    bool isOpen = false;
    std::string tree;
    std::string warnings;
};

// Reads one file after the other with the library's reader and with that of the document model.
class Readers {
public:
    Reading own(const std::string& path)
    {
        m_warnings.take();
        auto* const root = daeSafeCast<domCOLLADA>(m_reader.open(path));
        Reading reading = taken(m_ownDae, root);
        m_ownDae.clear();
        return reading;
    }

    Reading stock(const std::string& path)
    {
        m_warnings.take();
        auto* const root = daeSafeCast<domCOLLADA>(m_stockDae.open(path));
        Reading reading = taken(m_stockDae, root);
        m_stockDae.clear();
        return reading;
    }

    // @return whether the library's reader opens it
    bool expectSame(const std::string& path, const std::string& words)
    {
        const Reading mine = own(path);
        if (!mine.isOpen) {
            return false; // the other reader may not survive the document
        }
        const Reading theirs = stock(path);
        EXPECT_TRUE(theirs.isOpen) << words;
        EXPECT_EQ(theirs.tree, mine.tree) << words;
        EXPECT_EQ(theirs.warnings, mine.warnings) << words;
        return true;
    }

private:
    Reading taken(DAE& dae, domCOLLADA* root)
    {
        Reading reading;
        reading.isOpen = root != nullptr;
        reading.tree = root != nullptr ? documentTree(dae, *root) : "";
        reading.warnings = m_warnings.take();
        return reading;
    }

    WarningCapture m_warnings;
    ColladaReader m_reader{m_ownDae};
    DAE m_ownDae{&m_reader.database(), &m_reader, "1.4.1"};
    DAE m_stockDae{nullptr, nullptr, "1.4.1"};
};

ReaderTest::ReaderTest() : m_readers(std::make_unique<Readers>()) {}

ReaderTest::~ReaderTest() = default;

bool ReaderTest::expectSame(const std::string& text, const std::string& words)
{
    m_report.begin(words);
    return m_readers->expectSame(m_folder.write(text), words);
}

INSTANTIATE_ROWS(
    Documents, ReaderRowTest, {"Nothing", ""}, {"Blanks", " \n\t "},
    {"SecondOfASinglePlaceIsDropped",
     "<library_geometries><geometry><mesh><triangles><p>1 2</p><p>3</p></triangles></mesh></geometry>"
     "</library_geometries>"},
    {"TextRunsPartedByOtherThings",
     "<library_nodes><node><translate>1 2<!-- c --> 3</translate><translate>4 <?p i?> </translate>"
     "<translate>5<![CDATA[6]]> 7</translate><translate><![CDATA[8]]></translate>"
     "<rotate>1<foo/>2 3</rotate><scale>1&#32;2&amp;3</scale></node></library_nodes>"},
    {"TextOfNoPlace", "x<library_nodes>y<node>z<!-- --> <extra/>w</node></library_nodes>"},
    {"NumbersOfAllWays",
     "<library_nodes><node><matrix>1 -2 .5 -.5 1e3 1e400 NaN INF -INF x 0x10 1,5 +1 - . 1. "
     "12345678901234567890 0.1234567890123456789 1e-320</matrix></node></library_nodes>"
     "<library_geometries><geometry><mesh><source><int_array>1 -1 99999999999999999999 x 1.5</int_array>"
     "</source><source><bool_array>true false 1 0 x</bool_array></source><source><Name_array>a a b a "
     "ab</Name_array></source><source><IDREF_array>a b</IDREF_array></source><polygons><p>0 -1 3.7 "
     "18446744073709551616 x</p><p/></polygons></mesh></geometry></library_geometries>"},
    {"ReferencesOfAllWays",
     "<library_images><image><init_from>./my tex.png</init_from></image><image><init_from/></image><image>"
     "<init_from> </init_from></image><image><init_from>C:\\t\\a.png</init_from></image><image><init_from>"
     "a<!-- -->b c</init_from></image></library_images><library_nodes><node><instance_node url='#n'/>"
     "<instance_node/><instance_node url=''/><instance_node url='a[1]'/><instance_node url='b.dae#x'/>"
     "<instance_node url=' #n '/><instance_node url='#'/><instance_node url='http://h/p?q#f'/></node>"
     "<node id='n'/></library_nodes>"},
    {"IdsGivenTwice",
     "<library_nodes><node id='n'><node id='n'/><extra id='e'/><translate sid='t'/></node><extra id='n'/>"
     "<node id='e'/><node id=''/><node id=' a b '/></library_nodes><library_nodes id='n'/>"},
    {"IdInAnElementThatIsDropped",
     "<library_geometries><geometry id='g'><mesh id='m'/><mesh><source id='s'/></mesh></geometry>"
     "<geometry><mesh><source id='s'/></mesh></geometry></library_geometries>"},
    {"ChildrenOutOfOrder",
     "<library_visual_scenes><visual_scene><extra/><node><extra/><node/><instance_geometry url='#g'/>"
     "<translate/><rotate/><matrix/><translate/><instance_camera url='#c'/><asset/></node><asset/>"
     "</visual_scene><asset/></library_visual_scenes><asset/>"},
    {"EitherOr",
     "<library_effects><effect><profile_COMMON><technique><phong><diffuse><texture texture='t' texcoord='u'/>"
     "<color>1 1 1 1</color></diffuse><emission><color>1 0 0 1</color><color>0 1 0 1</color></emission></phong>"
     "<blinn/><lambert/></technique></profile_COMMON></effect></library_effects>"},
    {"Groups",
     "<library_effects><effect><profile_COMMON><newparam sid='s'><surface type='2D'><init_from>i</init_from>"
     "<init_from>j</init_from><format>A8</format></surface></newparam><newparam sid='p'><sampler2D><source>s"
     "</source></sampler2D></newparam><newparam><surface><init_as_null/><init_from>i</init_from></surface>"
     "</newparam></profile_COMMON></effect></library_effects><library_images><image id='i'/></library_images>"},
    {"OwnWords",
     "<library_nodes><node><extra><technique profile='p' xmlns:a='urn:a' xmlns='urn:b'>text<a:b a:c='1' c='2' "
     "id='own'> two <d xmlns='urn:d&amp;e'/> three <!-- --> four </a:b><node id='x'><translate>1 2 "
     "3</translate></node><p>1</p>"
     "<param name='n'/></technique></extra></node></library_nodes>"},
    {"UnknownThings",
     "<a:b/><unknown x='1'><node/></unknown><library_nodes y='2' a:z='3' xmlns:q='r'><node unknown='4' "
     "layer='a b c' type='JOINT'/></library_nodes>"},
    {"Entities", "<library_nodes name='&lt;&amp;&#65;&#x42;&quot;&apos;&gt;&#38;#38;'><node name='a&#10;b'/>"
                 "</library_nodes>"},
    {"AttributeValuesWithBlanks", "<library_nodes id=' \t a b \n c'><node name='\n'/></library_nodes>"});

TEST_F(ReaderTest, MakesTheTreeOfEveryStoredDocument)
{
    std::size_t opened = 0;
    for (const StoredDocument& document : documents::allDocuments()) {
        opened += expectSame(document.content(), document.path) ? 1 : 0;
    }
    EXPECT_GT(opened, 5u);
}

// --- Every kind of element, with every child of it, in several orders, below the shortest way from the root.

void collectNames(const daeMetaCMPolicy& model, std::vector<std::string>& names)
{
    auto& part = const_cast<daeMetaCMPolicy&>(model);
    if (auto* const attribute = dynamic_cast<daeMetaElementAttribute*>(&part)) {
        names.emplace_back(static_cast<const char*>(attribute->getName()));
    }
    if (auto* const group = dynamic_cast<daeMetaGroup*>(&part)) {
        daeMetaElement* const meta = libVideo::detail::GroupAccess::elementType(*group);
        collectNames(*meta->getCMRoot(), names);
    }
    const daeTArray<daeMetaCMPolicy*>& parts = ModelPartAccess::parts(model);
    for (std::size_t i = 0; i < parts.getCount(); ++i) {
        collectNames(*parts[i], names);
    }
}

std::vector<std::string> childNames(daeMetaElement& meta)
{
    std::vector<std::string> names;
    if (meta.getCMRoot() != nullptr) {
        collectNames(*meta.getCMRoot(), names);
    }
    return names;
}

struct Kind {
    std::string begin; // start tags from the root's child down to the parent
    std::string end;
    std::string name;
    daeMetaElement* meta;
};

std::vector<Kind> everyKind(DAE& dae)
{
    std::vector<Kind> kinds{{"", "", "COLLADA", dae.getMeta(domCOLLADA::ID())}};
    std::set<daeMetaElement*> known{kinds[0].meta};
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        const Kind kind = kinds[i];
        for (const std::string& name : childNames(*kind.meta)) {
            daeMetaElement* const meta = kind.meta->getCMRoot()->findChild(name.c_str());
            if (meta != nullptr && known.insert(meta).second) {
                kinds.push_back({kind.begin + '<' + kind.name + '>', "</" + kind.name + '>' + kind.end, name, meta});
            }
        }
    }
    return kinds;
}

std::string attributesOf(daeMetaElement& meta, const std::string& value)
{
    std::string all;
    const daeMetaAttributeRefArray& attributes = meta.getMetaAttributes();
    for (std::size_t i = 0; i < attributes.getCount(); ++i) {
        const std::string name = static_cast<const char*>(attributes[i]->getName());
        if (name != "xmlns") {
            all += ' ' + name + "='" + value + '\'';
        }
    }
    return all;
}

std::string text(const Kind& kind, const std::string& attributes, const std::string& content)
{
    if (kind.name == "COLLADA") {
        return "<COLLADA" + attributes + '>' + content + "</COLLADA>";
    }
    return kind.begin + '<' + kind.name + attributes + '>' + content + "</" + kind.name + '>' + kind.end;
}

// Every n-th kind, so that the parts can run in parallel.
constexpr std::size_t partCount = 4;
// Number of child names per document: the document model takes long to place a child among several hundred choices.
constexpr std::size_t mostChildNames = 40;

class ReaderKindTest : public ReaderTest, public testing::WithParamInterface<std::size_t> {};

TEST_P(ReaderKindTest, MakesEveryKindOfElement)
{
    DAE dae(nullptr, nullptr, "1.4.1");
    const std::vector<Kind> kinds = everyKind(dae);
    EXPECT_GT(kinds.size(), 400u);
    std::size_t opened = 0;
    std::size_t tried = 0;
    for (std::size_t i = GetParam(); i < kinds.size(); i += partCount, ++tried) {
        const Kind& kind = kinds[i];
        const std::string attributes = attributesOf(*kind.meta, "2");
        opened += expectSame(text(kind, attributes, "1 2.5 true"), kind.name + " with text") ? 1 : 0;
        expectSame(text(kind, attributesOf(*kind.meta, "#a b"), " x #y "), kind.name + " with words");
        expectSame(text(kind, "", ""), kind.name + " empty");
        const std::vector<std::string> names = childNames(*kind.meta);
        for (std::size_t first = 0; first < names.size(); first += mostChildNames) {
            std::string forwards;
            std::string backwards;
            for (std::size_t name = first; name < std::min(names.size(), first + mostChildNames); ++name) {
                const std::string child =
                    '<' + names[name] + " id='" + names[name] + "' sid='s'>1 2 x #a</" + names[name] + '>';
                forwards += child;
                backwards = child + backwards;
            }
            expectSame(text(kind, attributes, forwards + backwards), kind.name + " forwards");
            expectSame(text(kind, attributes, backwards + "<extra/>" + forwards), kind.name + " backwards");
        }
        if (testing::Test::HasFailure()) {
            return; // one kind is enough
        }
    }
    EXPECT_GT(opened, tried * 8 / 10);
}

INSTANTIATE_TEST_SUITE_P(Parts, ReaderKindTest, testing::Range<std::size_t>(0, partCount));

// --- Documents of which something is changed.

TEST_F(ReaderTest, MakesTheTreeOfBentDocuments)
{
#ifdef __SANITIZE_ADDRESS__
    constexpr std::uint32_t variants = 20;
#else
    constexpr std::uint32_t variants = 100;
#endif
    std::size_t opened = 0;
    for (const StoredDocument& document : documents::ownDocuments()) {
        const std::string content = document.content();
        if (content.size() > 100'000) {
            continue;
        }
        for (std::uint32_t seed = 0; seed < variants; ++seed) {
            std::string bent = content;
            DocumentMutator mutator(seed);
            if (mutator.mutate(bent) && mutator.mutate(bent)) {
                opened += expectSame(bent, document.path + ", seed " + std::to_string(seed)) ? 1 : 0;
            }
            if (testing::Test::HasFailure()) {
                return;
            }
        }
    }
    EXPECT_GT(opened, variants * 5);
    RecordProperty("opened", std::to_string(opened));
}

// --- The same in other encodings.

TEST_F(ReaderTest, EncodingsMakeNoDifference)
{
    // Longer than a block, so that a text and a tag are divided between two.
    std::string numbers;
    for (int i = 0; i < 40'000; ++i) {
        numbers += std::to_string(i) + (i % 7 == 0 ? "\r\n" : " ");
    }
    const std::string body = collada("<library_geometries><geometry id='g'><mesh><source><float_array>" + numbers +
                                     "</float_array></source><triangles><p>" + numbers +
                                     "</p></triangles></mesh></geometry></library_geometries>");
    const auto declared = [](const std::string& name) { return "<?xml version='1.0' encoding='" + name + "'?>"; };
    EXPECT_TRUE(expectSame(body, "no declaration"));
    EXPECT_TRUE(expectSame("\xEF\xBB\xBF" + declared("utf-8") + body, "UTF-8 with a mark"));
    EXPECT_TRUE(expectSame(inUtf16(declared("UTF-16") + body, true), "UTF-16, little end first"));
    EXPECT_TRUE(expectSame(inUtf16(declared("UTF-16") + body, false), "UTF-16, big end first"));
    const std::string letters = collada("<library_nodes><node name='\xE9' id='\xE9'><extra><technique profile='\xE8'>"
                                        "\xE9\xE8<\xE9>\xE9</\xE9></technique></extra></node></library_nodes>");
    EXPECT_TRUE(expectSame(declared("ISO-8859-1") + letters, "Latin 1"));
    EXPECT_TRUE(expectSame(declared("windows-1252") + letters, "code page 1252"));
    EXPECT_FALSE(expectSame(declared("UTF-8") + letters, "Latin 1 that says UTF-8"));
    EXPECT_TRUE(expectSame(declared("US-ASCII") + body, "ASCII"));
}

} // namespace
