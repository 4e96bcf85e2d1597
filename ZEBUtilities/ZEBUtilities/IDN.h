#pragma once

// The modules IDN and IDN/Tables: internationalised domain names.

#include <IDN/DnsCharacters.h>
#include <IDN/IDNADomains.h>
#include <IDN/IDNALabels.h>
#include <IDN/Nameprep.h>
#include <IDN/Normalization.h>
#include <IDN/OctetStrings.h>
#include <IDN/Punycode.h>
#include <IDN/Race.h>
#include <IDN/RaceBase32.h>
#include <IDN/Tables/NameprepTables.h>
#include <IDN/UTFConversions.h>
#include <IDN/XcodeTypes.h>
