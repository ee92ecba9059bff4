#pragma once

#include <libVideo/ColladaDom.h>

namespace testSupport {

/// While it exists, counts the document model's own messages instead of printing them. The destructor restores the
/// previous handler.
class SilentDocumentModel : public daeErrorHandler {
public:
    SilentDocumentModel() : m_before(daeErrorHandler::get()) { daeErrorHandler::setErrorHandler(this); }
    ~SilentDocumentModel() override { daeErrorHandler::setErrorHandler(m_before); }
    SilentDocumentModel(const SilentDocumentModel&) = delete;
    SilentDocumentModel& operator=(const SilentDocumentModel&) = delete;

    void handleError(daeString /*text*/) override { ++m_errorCount; }
    void handleWarning(daeString /*text*/) override { ++m_warningCount; }

    unsigned warningCount() const { return m_warningCount; }
    unsigned messageCount() const { return m_errorCount + m_warningCount; }

private:
    daeErrorHandler* m_before;
    unsigned m_errorCount = 0;
    unsigned m_warningCount = 0;
};

} // namespace testSupport
