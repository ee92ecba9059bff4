#include "DocumentFolder.h"

#include "support/Files.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <ostream>
#include <system_error>

namespace documents {

namespace {

std::string identifierOf(const std::string& text)
{
    std::string result = text;
    for (char& c : result) {
        c = std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
    }
    return result;
}

bool isDocument(const std::filesystem::path& path)
{
    std::string ending = path.extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ending == ".dae";
}

void append(std::vector<StoredDocument>& documents, const std::vector<StoredDocument>& others)
{
    documents.insert(documents.end(), others.begin(), others.end());
}

} // namespace

std::string StoredDocument::content() const
{
    return testSupport::contentOf(path);
}

void PrintTo(const StoredDocument& document, std::ostream* out)
{
    *out << document.name;
}

std::vector<StoredDocument> documentsBelow(const std::string& name, const std::string& folder)
{
    std::vector<std::filesystem::path> paths;
    std::error_code error;
    for (std::filesystem::recursive_directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->is_regular_file() && isDocument(entry->path())) {
            paths.push_back(entry->path());
        }
    }
    std::sort(paths.begin(), paths.end());
    std::vector<StoredDocument> documents;
    for (const std::filesystem::path& path : paths) {
        const std::string shown = path.lexically_relative(folder).replace_extension().string();
        documents.push_back({identifierOf(name + "_" + shown), path.string()});
        for (std::size_t i = 0; i + 1 < documents.size(); ++i) {
            if (documents[i].name == documents.back().name) {
                documents.back().name += "_";
            }
        }
    }
    return documents;
}

std::vector<StoredDocument> ownDocuments()
{
    std::vector<StoredDocument> documents = documentsBelow("data", DATA_FOLDER);
    append(documents, documentsBelow("seed", SEED_FOLDER));
    return documents;
}

std::vector<StoredDocument> allDocuments()
{
    std::vector<StoredDocument> documents = ownDocuments();
    append(documents, documentsBelow("corpus", CORPUS_FOLDER));
    return documents;
}

} // namespace documents
