#include "LoadScope.h"

#include <vesk/Exception.h>

#include <exception>
#include <filesystem>

namespace libVideo::detail {

namespace {

class SilentErrorHandler : public daeErrorHandler {
public:
    void handleError(daeString /*message*/) override {}
    void handleWarning(daeString /*message*/) override {}
};

// NOLINTNEXTLINE(cert-dcl50-cpp): the parser's signature
void dropParserMessage(void* /*context*/, const char* /*format*/, ...) {}

daeErrorHandler* silentErrorHandler()
{
    static SilentErrorHandler handler;
    return &handler;
}

} // namespace

NumericLocaleScope::NumericLocaleScope() : m_numericC(newlocale(LC_NUMERIC_MASK, "C", nullptr))
{
    if (m_numericC != nullptr) {
        m_before = uselocale(m_numericC);
    }
}

NumericLocaleScope::~NumericLocaleScope()
{
    if (m_numericC != nullptr) {
        uselocale(m_before);
        freelocale(m_numericC);
    }
}

SilenceScope::SilenceScope()
    : m_parserMessages(xmlGenericError),
      m_parserContext(xmlGenericErrorContext),
      m_parserErrors(xmlStructuredError),
      m_parserErrorContext(xmlStructuredErrorContext)
{
    xmlSetStructuredErrorFunc(nullptr, nullptr);
    xmlSetGenericErrorFunc(nullptr, dropParserMessage);
    // A handler of the host can only be recognized by comparing it with the default one.
    daeErrorHandler* const before = daeErrorHandler::get();
    daeErrorHandler::setErrorHandler(nullptr);
    m_isSilent = daeErrorHandler::get() == before;
    daeErrorHandler::setErrorHandler(m_isSilent ? silentErrorHandler() : before);
}

SilenceScope::~SilenceScope()
{
    if (m_isSilent) {
        daeErrorHandler::setErrorHandler(nullptr);
    }
    xmlSetGenericErrorFunc(m_parserContext, m_parserMessages);
    xmlSetStructuredErrorFunc(m_parserErrorContext, m_parserErrors);
}

ReferenceScope::ReferenceScope(DAE& dae, ColladaReader& reader)
    : m_list(dae.getURIResolvers().list()), m_before(m_list), m_resolver(dae, reader)
{
    m_list.clear(); // does not delete the entries
    m_list.append(&m_resolver);
}

ReferenceScope::~ReferenceScope()
{
    m_list = m_before;
}

domCOLLADA* LoadScope::open(const vesk::String& path)
{
    try {
        // Absolute, because the document model resolves relative paths against the folder in which it was constructed.
        const std::filesystem::path file = std::filesystem::absolute(path.data());
        return daeSafeCast<domCOLLADA>(m_references.resolver().openFirst(file));
    } catch (const vesk::Exception&) {
        throw;
    } catch (const std::exception&) {
        return nullptr;
    }
}

} // namespace libVideo::detail
