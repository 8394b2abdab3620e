#include "Token.h"

#include "softtoken.h"

#include <dlfcn.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <mutex>
#include <utility>

namespace tarvik::softtoken {

namespace {

const std::size_t KEY_BYTES = 16;
const std::size_t BLOCK_BYTES = 16;

std::string setting(const char* name, const char* otherwise) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : otherwise;
}

CK_FUNCTION_LIST* load(const std::string& module) {
    // Never closed: the module has handlers of its own that run when the process ends.
    void* const library = dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        throw Fault("cannot load the module: " + std::string(dlerror()));
    }
    void* const symbol = dlsym(library, "C_GetFunctionList");
    if (symbol == nullptr) {
        throw Fault(module + " is no PKCS #11 module");
    }
    CK_C_GetFunctionList getFunctionList = nullptr;
    static_assert(sizeof getFunctionList == sizeof symbol, "as POSIX has it");
    std::memcpy(&getFunctionList, &symbol, sizeof symbol);
    CK_FUNCTION_LIST* calls = nullptr;
    check(getFunctionList(&calls), "C_GetFunctionList");
    return calls;
}

template <typename Value>
CK_ATTRIBUTE attribute(CK_ATTRIBUTE_TYPE type, Value& value) {
    return {type, &value, sizeof value};
}

CK_ATTRIBUTE attribute(CK_ATTRIBUTE_TYPE type, Octets& value) {
    return {type, value.data(), value.size()};
}

// What a key of a session is: of no use to other processes, never to be read, and gone with the session.
std::vector<CK_ATTRIBUTE> keyTemplate(Octets& handle) {
    static CK_OBJECT_CLASS secretKey = CKO_SECRET_KEY;
    static CK_KEY_TYPE aes = CKK_AES;
    static CK_BBOOL yes = CK_TRUE;
    static CK_BBOOL no = CK_FALSE;
    return {attribute(CKA_CLASS, secretKey), attribute(CKA_KEY_TYPE, aes), attribute(CKA_ID, handle),
            attribute(CKA_TOKEN, no),        attribute(CKA_PRIVATE, yes),  attribute(CKA_SENSITIVE, yes),
            attribute(CKA_EXTRACTABLE, no),  attribute(CKA_ENCRYPT, yes),  attribute(CKA_DECRYPT, yes)};
}

}  // namespace

void check(CK_RV result, const char* call) {
    if (result != CKR_OK) {
        throw Fault(std::string(call) + " failed with " + std::to_string(result));
    }
}

std::shared_ptr<Token> Token::shared() {
    static std::mutex mutex;
    static std::weak_ptr<Token> opened;
    const std::lock_guard<std::mutex> lock(mutex);
    std::shared_ptr<Token> token = opened.lock();
    if (!token) {
        token.reset(new Token());
        opened = token;
    }
    return token;
}

Token::Token() : calls_(load(setting("SOFTTOKEN_MODULE", "/usr/lib/softhsm/libsofthsm2.so"))) {
    CK_C_INITIALIZE_ARGS threads = {};
    threads.flags = CKF_OS_LOCKING_OK;
    check(calls_->C_Initialize(&threads), "C_Initialize");
    try {
        slot_ = findSlot();
        logIn();
    } catch (const Fault&) {
        calls_->C_Finalize(nullptr);
        throw;
    }
}

Token::~Token() {
    calls_->C_CloseSession(session_);
    calls_->C_Finalize(nullptr);
}

CK_SLOT_ID Token::findSlot() const {
    CK_ULONG count = 0;
    check(calls_->C_GetSlotList(CK_TRUE, nullptr, &count), "C_GetSlotList");
    std::vector<CK_SLOT_ID> slots(count);
    check(calls_->C_GetSlotList(CK_TRUE, slots.data(), &count), "C_GetSlotList");
    const std::string label = setting("SOFTTOKEN_LABEL", "vorl");
    std::string padded = label;
    for (const CK_SLOT_ID slot : slots) {
        CK_TOKEN_INFO info = {};
        check(calls_->C_GetTokenInfo(slot, &info), "C_GetTokenInfo");
        padded.resize(sizeof info.label, ' ');
        if (std::equal(padded.begin(), padded.end(), info.label)) {
            return slot;
        }
    }
    throw Fault("there is no token \"" + label + "\"");
}

void Token::logIn() {
    check(calls_->C_OpenSession(slot_, CKF_SERIAL_SESSION, nullptr, nullptr, &session_), "C_OpenSession");
    std::string text;
    std::getline(std::ifstream(setting("SOFTTOKEN_PIN_FILE", "")), text);
    Octets pin(text.begin(), text.end());
    const CK_RV result = calls_->C_Login(session_, CKU_USER, pin.data(), pin.size());
    explicit_bzero(pin.data(), pin.size());
    explicit_bzero(text.data(), text.size());
    check(result, "C_Login");
}

Session::Session(std::shared_ptr<Token> token) : token_(std::move(token)), calls_(token_->calls()) {
    check(calls_.C_OpenSession(token_->slot(), CKF_SERIAL_SESSION, nullptr, nullptr, &session_),
          "C_OpenSession");
}

Session::~Session() {
    calls_.C_CloseSession(session_);
}

CK_OBJECT_HANDLE Session::keyOf(const Octets& handle) const {
    // An empty identifier would be that of any key without one.
    if (handle.empty()) {
        throw Fault("an empty handle");
    }
    Octets id = handle;
    CK_OBJECT_CLASS secretKey = CKO_SECRET_KEY;
    CK_KEY_TYPE aes = CKK_AES;
    CK_ATTRIBUTE wanted[] = {attribute(CKA_CLASS, secretKey), attribute(CKA_KEY_TYPE, aes),
                             attribute(CKA_ID, id)};
    check(calls_.C_FindObjectsInit(session_, wanted, 3), "C_FindObjectsInit");
    CK_OBJECT_HANDLE found[2] = {};
    CK_ULONG count = 0;
    const CK_RV result = calls_.C_FindObjects(session_, found, 2, &count);
    check(calls_.C_FindObjectsFinal(session_), "C_FindObjectsFinal");
    check(result, "C_FindObjects");
    if (count != 1) {
        throw Fault(count == 0 ? "there is no key of this handle" : "there are several keys of this handle");
    }
    return found[0];
}

CK_OBJECT_HANDLE Session::createKey(const Octets& handle, Octets value) const {
    Octets id = handle;
    std::vector<CK_ATTRIBUTE> attributes = keyTemplate(id);
    attributes.push_back(attribute(CKA_VALUE, value));
    CK_OBJECT_HANDLE key = CK_INVALID_HANDLE;
    const CK_RV result = calls_.C_CreateObject(session_, attributes.data(), attributes.size(), &key);
    explicit_bzero(value.data(), value.size());
    check(result, "C_CreateObject");
    return key;
}

CK_OBJECT_HANDLE Session::generateKey(const Octets& handle) const {
    Octets id = handle;
    CK_ULONG size = KEY_BYTES;
    std::vector<CK_ATTRIBUTE> attributes = keyTemplate(id);
    attributes.push_back(attribute(CKA_VALUE_LEN, size));
    CK_MECHANISM generation = {CKM_AES_KEY_GEN, nullptr, 0};
    CK_OBJECT_HANDLE key = CK_INVALID_HANDLE;
    check(calls_.C_GenerateKey(session_, &generation, attributes.data(), attributes.size(), &key),
          "C_GenerateKey");
    return key;
}

Octets Session::random(std::size_t size) const {
    Octets drawn(size);
    check(calls_.C_GenerateRandom(session_, drawn.data(), drawn.size()), "C_GenerateRandom");
    return drawn;
}

Octets Session::encrypt(CK_MECHANISM mechanism, CK_OBJECT_HANDLE key, Octets data) const {
    // No message at all is encrypted too, but PKCS #11 takes a null pointer for a mistake.
    data.reserve(1);
    Octets out(data.size() + BLOCK_BYTES);
    CK_ULONG size = out.size();
    check(calls_.C_EncryptInit(session_, &mechanism, key), "C_EncryptInit");
    check(calls_.C_Encrypt(session_, data.data(), data.size(), out.data(), &size), "C_Encrypt");
    out.resize(size);
    return out;
}

Octets Session::decrypt(CK_MECHANISM mechanism, CK_OBJECT_HANDLE key, Octets data) const {
    Octets out(data.size());
    CK_ULONG size = out.size();
    check(calls_.C_DecryptInit(session_, &mechanism, key), "C_DecryptInit");
    check(calls_.C_Decrypt(session_, data.data(), data.size(), out.data(), &size), "C_Decrypt");
    out.resize(size);
    return out;
}

Key::Key(std::shared_ptr<Session> session, std::vector<unsigned char> handle)
    : session_(std::move(session)), handle_(std::move(handle)) {}

Key Key::import(const std::vector<unsigned char>& value) {
    if (value.size() != KEY_BYTES) {
        throw Fault("a key has 16 bytes");
    }
    auto session = std::make_shared<Session>(Token::shared());
    Octets handle = session->random(KEY_BYTES);
    session->createKey(handle, value);
    return Key(std::move(session), std::move(handle));
}

Key Key::generate() {
    auto session = std::make_shared<Session>(Token::shared());
    Octets handle = session->random(KEY_BYTES);
    session->generateKey(handle);
    return Key(std::move(session), std::move(handle));
}

}  // namespace tarvik::softtoken
