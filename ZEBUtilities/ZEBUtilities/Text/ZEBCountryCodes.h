#pragma once

#include <ZEBPlatform/Foundation/NSString.h>

#include <array>
#include <optional>
#include <utility>

namespace zeb {

/// ISO 3166-1 codes of the countries that the service treats specially. Deliberately, that of the
/// United Arab Emirates is "UA", which ISO gives to Ukraine, and not "AE": the service expects it.
inline constexpr const char* ZEBLocalizationArgentinaISOCountryCode = "AR";
inline constexpr const char* ZEBLocalizationAzerbaijanISOCountryCode = "AZ";
inline constexpr const char* ZEBLocalizationBhutanISOCountryCode = "BT";
inline constexpr const char* ZEBLocalizationBoliviaISOCountryCode = "BO";
inline constexpr const char* ZEBLocalizationBonaireISOCountryCode = "BQ";
inline constexpr const char* ZEBLocalizationCuracaoISOCountryCode = "CW";
inline constexpr const char* ZEBLocalizationFijiISOCountryCode = "FJ";
inline constexpr const char* ZEBLocalizationGeorgiaISOCountryCode = "GE";
inline constexpr const char* ZEBLocalizationHaitiISOCountryCode = "HT";
inline constexpr const char* ZEBLocalizationIndonesiaISOCountryCode = "ID";
inline constexpr const char* ZEBLocalizationIraqISOCountryCode = "IQ";
inline constexpr const char* ZEBLocalizationIsleOfManISOCountryCode = "IM";
inline constexpr const char* ZEBLocalizationItalyISOCountryCode = "IT";
inline constexpr const char* ZEBLocalizationJamaicaISOCountryCode = "JM";
inline constexpr const char* ZEBLocalizationJapanISOCountryCode = "JP";
inline constexpr const char* ZEBLocalizationKazakhstanISOCountryCode = "KZ";
inline constexpr const char* ZEBLocalizationKenyaISOCountryCode = "KE";
inline constexpr const char* ZEBLocalizationLiberiaISOCountryCode = "LR";
inline constexpr const char* ZEBLocalizationMalaysiaISOCountryCode = "MY";
inline constexpr const char* ZEBLocalizationMaldivesISOCountryCode = "MV";
inline constexpr const char* ZEBLocalizationMexicoISOCountryCode = "MX";
inline constexpr const char* ZEBLocalizationMontenegroISOCountryCode = "ME";
inline constexpr const char* ZEBLocalizationNauruISOCountryCode = "NR";
inline constexpr const char* ZEBLocalizationNewZealandISOCountryCode = "NZ";
inline constexpr const char* ZEBLocalizationNigeriaISOCountryCode = "NG";
inline constexpr const char* ZEBLocalizationOmanISOCountryCode = "OM";
inline constexpr const char* ZEBLocalizationPakistanISOCountryCode = "PK";
inline constexpr const char* ZEBLocalizationPalestineISOCountryCode = "PS";
inline constexpr const char* ZEBLocalizationPanamaISOCountryCode = "PA";
inline constexpr const char* ZEBLocalizationPapuaNewGuineaISOCountryCode = "PG";
inline constexpr const char* ZEBLocalizationParaguayISOCountryCode = "PY";
inline constexpr const char* ZEBLocalizationPhilippinesISOCountryCode = "PH";
inline constexpr const char* ZEBLocalizationQatarISOCountryCode = "QA";
inline constexpr const char* ZEBLocalizationRwandaISOCountryCode = "RW";
inline constexpr const char* ZEBLocalizationSaudiArabiaISOCountryCode = "SA";
inline constexpr const char* ZEBLocalizationSerbiaISOCountryCode = "RS";
inline constexpr const char* ZEBLocalizationSeychellesISOCountryCode = "SC";
inline constexpr const char* ZEBLocalizationSriLankaISOCountryCode = "LK";
inline constexpr const char* ZEBLocalizationTongaISOCountryCode = "TO";
inline constexpr const char* ZEBLocalizationTunisiaISOCountryCode = "TN";
inline constexpr const char* ZEBLocalizationTurkeyISOCountryCode = "TR";
inline constexpr const char* ZEBLocalizationUnitedArabEmiratesISOCountryCode = "UA";
inline constexpr const char* ZEBLocalizationUnitedKingdomISOCountryCode = "GB";
inline constexpr const char* ZEBLocalizationUSAISOCountryCode = "US";
inline constexpr const char* ZEBLocalizationUruguayISOCountryCode = "UY";
inline constexpr const char* ZEBLocalizationUzbekistanISOCountryCode = "UZ";
inline constexpr const char* ZEBLocalizationYemenISOCountryCode = "YE";

/// The same countries. The order of the enumerators and their raw values never change.
enum class ISOCountryCode {
  argentina,
  azerbaijan,
  bhutan,
  bolivia,
  bonaire,
  curacao,
  fiji,
  georgia,
  haiti,
  indonesia,
  iraq,
  isleOfMan,
  italy,
  jamaica,
  japan,
  kazakhstan,
  kenya,
  liberia,
  malaysia,
  maldives,
  mexico,
  montenegro,
  nauru,
  newZealand,
  nigeria,
  oman,
  pakistan,
  palestine,
  panama,
  papuaNewGuinea,
  paraguay,
  philippines,
  qatar,
  rwanda,
  saudiArabia,
  serbia,
  seychelles,
  sriLanka,
  tonga,
  tunisia,
  turkey,
  unitedArabEmirates,
  unitedKingdom,
  usa,
  uruguay,
  uzbekistan,
  yemen,
};

/// ISO 639-1 codes of languages.
enum class ISOLanguageCode {
  english,
  japanese,
};

/// All enumerators in order, each with its raw value.
inline constexpr std::array ISOCountryCodeCases{
    std::pair{ISOCountryCode::argentina, ZEBLocalizationArgentinaISOCountryCode},
    std::pair{ISOCountryCode::azerbaijan, ZEBLocalizationAzerbaijanISOCountryCode},
    std::pair{ISOCountryCode::bhutan, ZEBLocalizationBhutanISOCountryCode},
    std::pair{ISOCountryCode::bolivia, ZEBLocalizationBoliviaISOCountryCode},
    std::pair{ISOCountryCode::bonaire, ZEBLocalizationBonaireISOCountryCode},
    std::pair{ISOCountryCode::curacao, ZEBLocalizationCuracaoISOCountryCode},
    std::pair{ISOCountryCode::fiji, ZEBLocalizationFijiISOCountryCode},
    std::pair{ISOCountryCode::georgia, ZEBLocalizationGeorgiaISOCountryCode},
    std::pair{ISOCountryCode::haiti, ZEBLocalizationHaitiISOCountryCode},
    std::pair{ISOCountryCode::indonesia, ZEBLocalizationIndonesiaISOCountryCode},
    std::pair{ISOCountryCode::iraq, ZEBLocalizationIraqISOCountryCode},
    std::pair{ISOCountryCode::isleOfMan, ZEBLocalizationIsleOfManISOCountryCode},
    std::pair{ISOCountryCode::italy, ZEBLocalizationItalyISOCountryCode},
    std::pair{ISOCountryCode::jamaica, ZEBLocalizationJamaicaISOCountryCode},
    std::pair{ISOCountryCode::japan, ZEBLocalizationJapanISOCountryCode},
    std::pair{ISOCountryCode::kazakhstan, ZEBLocalizationKazakhstanISOCountryCode},
    std::pair{ISOCountryCode::kenya, ZEBLocalizationKenyaISOCountryCode},
    std::pair{ISOCountryCode::liberia, ZEBLocalizationLiberiaISOCountryCode},
    std::pair{ISOCountryCode::malaysia, ZEBLocalizationMalaysiaISOCountryCode},
    std::pair{ISOCountryCode::maldives, ZEBLocalizationMaldivesISOCountryCode},
    std::pair{ISOCountryCode::mexico, ZEBLocalizationMexicoISOCountryCode},
    std::pair{ISOCountryCode::montenegro, ZEBLocalizationMontenegroISOCountryCode},
    std::pair{ISOCountryCode::nauru, ZEBLocalizationNauruISOCountryCode},
    std::pair{ISOCountryCode::newZealand, ZEBLocalizationNewZealandISOCountryCode},
    std::pair{ISOCountryCode::nigeria, ZEBLocalizationNigeriaISOCountryCode},
    std::pair{ISOCountryCode::oman, ZEBLocalizationOmanISOCountryCode},
    std::pair{ISOCountryCode::pakistan, ZEBLocalizationPakistanISOCountryCode},
    std::pair{ISOCountryCode::palestine, ZEBLocalizationPalestineISOCountryCode},
    std::pair{ISOCountryCode::panama, ZEBLocalizationPanamaISOCountryCode},
    std::pair{ISOCountryCode::papuaNewGuinea, ZEBLocalizationPapuaNewGuineaISOCountryCode},
    std::pair{ISOCountryCode::paraguay, ZEBLocalizationParaguayISOCountryCode},
    std::pair{ISOCountryCode::philippines, ZEBLocalizationPhilippinesISOCountryCode},
    std::pair{ISOCountryCode::qatar, ZEBLocalizationQatarISOCountryCode},
    std::pair{ISOCountryCode::rwanda, ZEBLocalizationRwandaISOCountryCode},
    std::pair{ISOCountryCode::saudiArabia, ZEBLocalizationSaudiArabiaISOCountryCode},
    std::pair{ISOCountryCode::serbia, ZEBLocalizationSerbiaISOCountryCode},
    std::pair{ISOCountryCode::seychelles, ZEBLocalizationSeychellesISOCountryCode},
    std::pair{ISOCountryCode::sriLanka, ZEBLocalizationSriLankaISOCountryCode},
    std::pair{ISOCountryCode::tonga, ZEBLocalizationTongaISOCountryCode},
    std::pair{ISOCountryCode::tunisia, ZEBLocalizationTunisiaISOCountryCode},
    std::pair{ISOCountryCode::turkey, ZEBLocalizationTurkeyISOCountryCode},
    std::pair{ISOCountryCode::unitedArabEmirates, ZEBLocalizationUnitedArabEmiratesISOCountryCode},
    std::pair{ISOCountryCode::unitedKingdom, ZEBLocalizationUnitedKingdomISOCountryCode},
    std::pair{ISOCountryCode::usa, ZEBLocalizationUSAISOCountryCode},
    std::pair{ISOCountryCode::uruguay, ZEBLocalizationUruguayISOCountryCode},
    std::pair{ISOCountryCode::uzbekistan, ZEBLocalizationUzbekistanISOCountryCode},
    std::pair{ISOCountryCode::yemen, ZEBLocalizationYemenISOCountryCode},
};
inline constexpr std::array ISOLanguageCodeCases{
    std::pair{ISOLanguageCode::english, "en"},
    std::pair{ISOLanguageCode::japanese, "ja"},
};

/// The raw value, such as "JP" or "ja".
constexpr const char* rawValue(ISOCountryCode code) noexcept {
  return ISOCountryCodeCases[static_cast<std::size_t>(code)].second;
}
constexpr const char* rawValue(ISOLanguageCode code) noexcept {
  return ISOLanguageCodeCases[static_cast<std::size_t>(code)].second;
}

/// The enumerator with the raw value; empty for any other text, in any other case, and for nil.
/// "UA" gives the United Arab Emirates.
std::optional<ISOCountryCode> ISOCountryCodeWithRawValue(const NSString& rawValue);
std::optional<ISOLanguageCode> ISOLanguageCodeWithRawValue(const NSString& rawValue);

}  // namespace zeb
