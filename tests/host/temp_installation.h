#pragma once
// A temporary installation directory for host tests, removed with the object; closes whatever
// installation the test opened.

#include <cstdlib>
#include <filesystem>
#include <string>

#include "host/files.h"
#include "host/installation.h"

class TempInstallation {
public:
    TempInstallation() {
        std::string pattern = (std::filesystem::temp_directory_path() / "nyhost-XXXXXX").string();
        m_path = mkdtemp(pattern.data()) ? pattern + "/" : std::string();
    }
    ~TempInstallation() {
        ny::CloseInstallation();
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TempInstallation(const TempInstallation&) = delete;
    TempInstallation& operator=(const TempInstallation&) = delete;

    const std::string& Path() const { return m_path; }
    // Writes a file under the installation, making its folders.
    void Write(const std::string& relative, const std::string& bytes) const {
        ny::WriteFileAtomic(m_path + relative, bytes);
    }

private:
    std::string m_path;
};
