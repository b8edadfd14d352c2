// Activation by program identifier: the module's own names without
// registration, registered names per user over per machine, CurVer, and
// the statuses for unknown and missing names.
#include "src/platform/reg_file.h"
#include "tests/server/registry_dir.h"
#include "tests/test_util.h"

namespace pv::test {
namespace {

class Activation : public RegistryDirTest {
 protected:
  void Write(const char* scope, const RegFile& file) { WriteFile(scope, file.Serialize()); }
};

CLSID ClassOf(const char16_t* name, HRESULT expected = S_OK) {
  CLSID clsid{};
  EXPECT_EQ(PvCLSIDFromProgID(name, &clsid), expected) << U8(WStringView(name));
  return clsid;
}

TEST_F(Activation, OwnClassesNeedNoRegistration) {
  EXPECT_TRUE(IsEqualCLSID(ClassOf(u"ParcelvaneLib.EMSMessageParser"), CLSID_EMSMessageParser));
  EXPECT_TRUE(IsEqualCLSID(ClassOf(u"ParcelvaneLib.EMSMessageParser.1"), CLSID_EMSMessageParser));
  EXPECT_TRUE(IsEqualCLSID(ClassOf(u"parcelvanelib.emsmimeparts"), CLSID_EMSMimeParts));
  // Unregistered, the decoder's names are the decoder's.
  EXPECT_TRUE(IsEqualCLSID(ClassOf(u"ParcelvaneLib.EMSMimePartDecoder.1"), CLSID_EMSMimePartDecoder));
  EXPECT_TRUE(IsEqualCLSID(ClassOf(u"ParcelvaneLib.EMSMimePartEncoder.1"), CLSID_EMSMimePartEncoder));
}

TEST_F(Activation, UnknownAndMissingNames) {
  ClassOf(u"ParcelvaneLib.Nothing", CO_E_CLASSSTRING);
  ClassOf(u"EMSMessageParser", CO_E_CLASSSTRING);
  ClassOf(u"ParcelvaneLib.EMSMessageParser.2", CO_E_CLASSSTRING);
  ClassOf(u"", CO_E_CLASSSTRING);
  ClassOf(u"a\\b", CO_E_CLASSSTRING);
  CLSID clsid;
  EXPECT_EQ(PvCLSIDFromProgID(nullptr, &clsid), E_INVALIDARG);
  EXPECT_EQ(PvCLSIDFromProgID(u"ParcelvaneLib.EMSMimePart", nullptr), E_INVALIDARG);
}

TEST_F(Activation, RegisteredVersionedDecoderNameGivesTheEncoder) {
  ASSERT_EQ(DllRegisterServer(), S_OK);
  EXPECT_TRUE(IsEqualCLSID(ClassOf(u"ParcelvaneLib.EMSMimePartDecoder.1"), CLSID_EMSMimePartEncoder));
  EXPECT_TRUE(IsEqualCLSID(ClassOf(u"ParcelvaneLib.EMSMimePartDecoder"), CLSID_EMSMimePartDecoder));
  EXPECT_TRUE(IsEqualCLSID(ClassOf(u"ParcelvaneLib.EMSMimePartEncoder"), CLSID_EMSMimePartEncoder));
  ComPtr<IUnknown> object;
  ASSERT_EQ(PvCreateInstanceByProgID(u"ParcelvaneLib.EMSMimePartDecoder.1", nullptr, IID_IUnknown,
                                     object.put_void()),
            S_OK);
  ComPtr<IEMSMimePartEncoder> encoder;
  EXPECT_EQ(object->QueryInterface(IID_IEMSMimePartEncoder, encoder.put_void()), S_OK);
}

TEST_F(Activation, PerUserEntriesOverridePerMachineOnes) {
  ASSERT_EQ(DllRegisterServer(), S_OK);
  RegFile user;
  user.SetString("HKEY_CURRENT_USER\\Software\\Classes\\ParcelvaneLib.EMSMessageParser\\CLSID", "",
                 "{F43DBF87-A05E-4D95-88A1-354ADBAE7295}");  // the data object's class
  Write("user", user);
  EXPECT_TRUE(IsEqualCLSID(ClassOf(u"ParcelvaneLib.EMSMessageParser"), CLSID_EMSDataObject));
  EXPECT_TRUE(IsEqualCLSID(ClassOf(u"ParcelvaneLib.EMSMessageParser.1"), CLSID_EMSMessageParser));
  ComPtr<IEMSDataObject> data;
  EXPECT_EQ(PvCreateInstanceByProgID(u"ParcelvaneLib.EMSMessageParser", nullptr, IID_IEMSDataObject,
                                     data.put_void()),
            S_OK);
  EXPECT_TRUE(data);
}

TEST_F(Activation, ANameWithoutAClassFollowsItsCurrentVersion) {
  RegFile machine;
  machine.SetString("HKEY_CLASSES_ROOT\\Acme.Mail.1\\CLSID", "", "{EE9F3FE3-0DDB-43A1-8B42-5ED228352349}");
  machine.SetString("HKEY_CLASSES_ROOT\\Acme.Mail\\CurVer", "", "Acme.Mail.1");
  machine.SetString("HKEY_CLASSES_ROOT\\Acme.Broken\\CLSID", "", "not a guid");
  machine.SetString("HKEY_CLASSES_ROOT\\Acme.Nowhere\\CurVer", "", "Acme.Missing");
  Write("machine", machine);
  EXPECT_TRUE(IsEqualCLSID(ClassOf(u"Acme.Mail"), CLSID_EMSMimePart));
  EXPECT_TRUE(IsEqualCLSID(ClassOf(u"acme.mail.1"), CLSID_EMSMimePart));
  ClassOf(u"Acme.Broken", CO_E_CLASSSTRING);
  ClassOf(u"Acme.Nowhere", CO_E_CLASSSTRING);
  ComPtr<IEMSMimePart> part;
  EXPECT_EQ(PvCreateInstanceByProgID(u"Acme.Mail", nullptr, IID_IEMSMimePart, part.put_void()), S_OK);
  EXPECT_EQ(PvCreateInstanceByProgID(u"Acme.Nowhere", nullptr, IID_IEMSMimePart, part.put_void()),
            CO_E_CLASSSTRING);
  EXPECT_FALSE(part);
  EXPECT_EQ(PvCreateInstanceByProgID(u"Acme.Mail", nullptr, IID_IEMSMimePart, nullptr), E_POINTER);
}

TEST_F(Activation, ACorruptRegistryKnowsNothingButOwnNamesStillResolve) {
  WriteFile("user", "garbage");
  EXPECT_TRUE(IsEqualCLSID(ClassOf(u"ParcelvaneLib.EMSMimePart"), CLSID_EMSMimePart));
  ClassOf(u"Acme.Mail", CO_E_CLASSSTRING);
}

}  // namespace
}  // namespace pv::test
