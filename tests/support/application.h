#pragma once

#include <string>
#include <vector>

#include "ktl/core/paths.h"
#include "ktl/platform/encoding.h"
#include "ktl/platform/message_box.h"
#include "ktl/platform/system.h"
#include "tests/support/scratch_folder.h"

namespace ktl::test {

/// An application folder of its own, and a user who answers every message box, while it lives.
///
///     Application application;
///     SomethingThatFails();
///     EXPECT_EQ(application.Log(), "...");
class Application {
  public:
    /// `answer` is one of ID...
    explicit Application(int answer = IDNO) {
        SetApplicationFolder(m_folder.Name());
        m_boxes = SetMessageBoxHook([this, answer](const CString &text, UINT type) {
            m_questions.push_back(ToUtf8(text) + " " + std::to_string(type));
            return answer;
        });
        m_viewers = SetShellExecuteHook([this](const CString &verb, const CString &file, const CString &) {
            m_opened.push_back(ToUtf8(verb) + " " + SystemPath(file));
            return 33;
        });
    }
    Application(const Application &) = delete;
    Application &operator=(const Application &) = delete;
    ~Application() {
        SetShellExecuteHook(m_viewers);
        SetMessageBoxHook(m_boxes);
        SetApplicationFolder(CString());
    }

    const ScratchFolder &Folder() const { return m_folder; }
    /// The error log in UTF-8.
    std::string Log() const { return ToUtf8(m_folder.Read("error.log")); }
    /// How often an error of that code was logged.
    int Logged(int code) const {
        CString head;
        head.Format(":%.6d\n", code);
        const std::string log = m_folder.Read("error.log");
        int count = 0;
        for (std::size_t at = log.find(head); at != std::string::npos; at = log.find(head, at + 1)) ++count;
        return count;
    }
    /// The texts asked or shown, each with its style.
    const std::vector<std::string> &Questions() const { return m_questions; }
    /// Verb and file of what was opened.
    const std::vector<std::string> &Opened() const { return m_opened; }

  private:
    ScratchFolder m_folder;
    std::vector<std::string> m_questions;
    std::vector<std::string> m_opened;
    MessageBoxHook m_boxes;
    ShellExecuteHook m_viewers;
};

}  // namespace ktl::test
