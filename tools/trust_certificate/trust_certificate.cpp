// trust_certificate CERTIFICATE.der
//
// Adds the certificate to the LocalMachine "Root" system store, replacing an
// earlier copy, so that WinINet in this Wine prefix accepts servers whose
// chain ends in it. Exits 0 when it is added; otherwise prints one line on
// standard error and exits non-zero.

#include <windows.h>

#include <wincrypt.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

std::string LastErrorText(const char* what)
{
    char text[160];
    std::snprintf(text, sizeof text, "%s failed (error 0x%08lX)", what, GetLastError());
    return text;
}

std::vector<BYTE> ReadWholeFile(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
    {
        throw std::runtime_error("cannot read the certificate file");
    }
    std::vector<BYTE> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (bytes.empty())
    {
        throw std::runtime_error("the certificate file is empty");
    }
    return bytes;
}

void AddToRootStore(const std::vector<BYTE>& der)
{
    HCERTSTORE store =
        CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, CERT_SYSTEM_STORE_LOCAL_MACHINE, L"Root");
    if (store == nullptr)
    {
        throw std::runtime_error(LastErrorText("opening the LocalMachine Root store"));
    }
    const BOOL added = CertAddEncodedCertificateToStore(store, X509_ASN_ENCODING, der.data(),
                                                        static_cast<DWORD>(der.size()),
                                                        CERT_STORE_ADD_REPLACE_EXISTING, nullptr);
    const std::string failure = added ? "" : LastErrorText("adding the certificate");
    CertCloseStore(store, 0);
    if (!added)
    {
        throw std::runtime_error(failure);
    }
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    try
    {
        if (argc != 2)
        {
            std::fputs("usage: trust_certificate CERTIFICATE.der\n", stderr);
            return 2;
        }
        AddToRootStore(ReadWholeFile(argv[1]));
        return 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "trust_certificate: %s\n", error.what());
    }
    catch (...)
    {
        std::fputs("trust_certificate: unexpected failure\n", stderr);
    }
    return 1;
}
