#pragma once
// What the sound and occlusion edits share: the row's own random ids, its name for messages,
// template text, and the notes about sound files that are not installed. Internal to the
// assets library.

#include "velmora/assets/soundedits.h"

#include <cstdint>
#include <random>
#include <string>
#include <string_view>

namespace velmora::assets::snd {

// The random ids of one row: a generator of its own, so that rows edited at once on several
// threads share nothing.
class RowIds {
public:
    RowIds(const SoundSettings& settings, const RowInput& input);
    // A whole number from 10000000 up to but not including 30000000.
    std::string next();

private:
    std::mt19937_64 m_engine;
};

// The template's text as loadSoundSettings read it, in the document's line ends; empty when it
// was not read.
std::string templateText(const SoundSettings& settings, const std::string& name, const std::string& xml);

// The blueprint's Name, as the closing report shows it (UTF-8).
std::string rowName(const RowInput& input);

// The row left as it was: language entry 535 and the name. A row without a name is passed
// over without one.
RowEdit notChanged(const SoundSettings& settings, const RowInput& input);

// A note when the blueprint Provider\Product\id (id ending .xml) is not below Assets as .bin.
void noteBlueprint(const SoundSettings& settings, RowEdit& edit, std::string_view provider,
                   std::string_view product, std::string_view id);
// The same for the reference whose <BlueprintID stands at `pos` (one-based).
void noteReferenceAt(const SoundSettings& settings, RowEdit& edit, const std::string& xml, std::size_t pos);
// A note when the bogie sound proxy (below Assets, no ending) is neither .proxybin nor .proxyxml.
void noteProxy(const SoundSettings& settings, RowEdit& edit, std::string_view proxy);

// Sets the value of the first <tag at or after `from` (one-based). False when there is none.
bool setTag(std::string& xml, std::size_t from, std::string_view tag, std::string_view value);

// The row's edit for each family.
RowEdit wagonSounds(const SoundSettings& settings, const RowInput& input);
RowEdit coachSounds(const SoundSettings& settings, const RowInput& input);
RowEdit bogieName(const SoundSettings& settings, const RowInput& input);
RowEdit class37(const SoundSettings& settings, const RowInput& input);
RowEdit class47(const SoundSettings& settings, const RowInput& input);
RowEdit hst(const SoundSettings& settings, const RowInput& input);
RowEdit occlusion(const SoundSettings& settings, const RowInput& input);

// The occlusion commands' pack: the cab shadow read, the occlusion folder copied below Assets
// when missing. Empty, or what is missing.
std::string loadOcclusion(AppContext& ctx, SoundSettings& settings);

} // namespace velmora::assets::snd
