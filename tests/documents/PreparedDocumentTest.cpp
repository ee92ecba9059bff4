#include "DocumentFolder.h"

#include "support/CrashReport.h"
#include "support/DocumentChange.h"
#include "support/PreparationCheck.h"
#include "support/Rows.h"
#include "support/TortureFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// Prepares documents of all kinds, good and bad, and loads the results with the library.

namespace {

using documents::StoredDocument;
using namespace testSupport;

std::vector<StoredDocument> documentsToPrepare()
{
    std::vector<StoredDocument> all = documents::documentsBelow("hostile", HOSTILE_FOLDER);
    for (const StoredDocument& document : documents::documentsBelow("seed", SEED_FOLDER)) {
        all.push_back(document);
    }
    return all;
}

class PreparedDocumentTest : public testing::TestWithParam<StoredDocument> {};

TEST_P(PreparedDocumentTest, IsWellFormedAndPreparesToItself)
{
    const TortureFolder folder;
    CrashReport report(60);
    report.begin(GetParam().path);
    EXPECT_EQ("", faultOfPreparation(folder.write(GetParam().content())));
}

TEST_P(PreparedDocumentTest, CutOrBentAsWell)
{
    const std::string content = GetParam().content();
    const TortureFolder folder;
    CrashReport report(300);
    for (std::size_t part = 1; part < 10; ++part) {
        report.begin(GetParam().path + " cut");
        EXPECT_EQ("", faultOfPreparation(folder.write(content.substr(0, content.size() * part / 10))));
    }
    for (unsigned seed = 0; seed < 30 && content.size() < 100'000; ++seed) {
        std::string bent = content;
        if (DocumentMutator(seed).mutate(bent)) {
            report.begin(GetParam().path + " bent by seed " + std::to_string(seed));
            EXPECT_EQ("", faultOfPreparation(folder.write(bent))) << "seed " << seed;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Documents, PreparedDocumentTest, testing::ValuesIn(documentsToPrepare()), rowName);

} // namespace
