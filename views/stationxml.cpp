#include "views/stationxml.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <new>
#include <utility>
#include <vector>

#include "seed/format.h"
#include "views/epoch_index.h"
#include "views/epochs.h"
#include "views/json.h"
#include "views/places.h"
#include "views/response_xml.h"
#include "views/volume_shelf.h"
#include "views/xml.h"
#include "views/xml_values.h"

namespace tarvik {
namespace {

constexpr std::int32_t kNone = -1;

// Sums up a document's text, to compare parts of documents.
class Digest : public LineSink {
 public:
  bool write(std::string_view text) override {
    for (; text.size() >= sizeof(std::uint64_t); text.remove_prefix(sizeof(std::uint64_t))) {
      std::uint64_t word = 0;
      std::memcpy(&word, text.data(), sizeof word);
      add(word);
    }
    for (const char c : text) add(static_cast<unsigned char>(c));
    return true;
  }
  [[nodiscard]] std::uint64_t sum() const { return sum_; }

 private:
  void add(std::uint64_t word) {
    sum_ = (sum_ ^ word) * 0x9E3779B97F4A7C15;
    sum_ ^= sum_ >> 29;
  }

  std::uint64_t sum_ = 0x243F6A8885A308D3;
};

// A number that becomes an element, within bounds of the format.
struct Number {
  Place place;
  const char *element;
  double least;
  double most;
  bool most_is_out = false;  // the upper bound itself is out of bounds
  bool is_required = true;
};

constexpr double kAny = std::numeric_limits<double>::infinity();

using Numbers = std::vector<Number>;

const Numbers &station_numbers() {
  static const Numbers numbers = {{{50, "lat"}, "Latitude", -90, 90, true},
                                  {{50, "lon"}, "Longitude", -180, 180},
                                  {{50, "elev"}, "Elevation", -kAny, kAny}};
  return numbers;
}
const Numbers &channel_numbers() {
  static const Numbers numbers = {{{52, "lat"}, "Latitude", -90, 90, true},
                                  {{52, "lon"}, "Longitude", -180, 180},
                                  {{52, "elev"}, "Elevation", -kAny, kAny},
                                  {{52, "depth"}, "Depth", -kAny, kAny}};
  return numbers;
}
const Numbers &optional_channel_numbers() {
  static const Numbers numbers = {{{52, "azimuth"}, "Azimuth", 0, 360, true, false},
                                  {{52, "dip"}, "Dip", -90, 90, false, false},
                                  {{52, "samprate"}, "SampleRate", -kAny, kAny, false, false},
                                  {{52, "maxdrift"}, "ClockDrift", 0, kAny, false, false}};
  return numbers;
}

// Why an entry (nullptr for none) cannot be written; nullptr where it can.
const char *fault_of(const SDBlkEntry *entry, const Number &number) {
  if (entry == nullptr) return number.is_required ? kNoValue : nullptr;
  const double value = entry->value.d;
  const bool within =
      value >= number.least && (number.most_is_out ? value < number.most : value <= number.most);
  return within ? nullptr : "is out of range";
}

bool has_all(const SDBlk &block, const Numbers &numbers) {
  return std::all_of(numbers.begin(), numbers.end(), [&](const Number &number) {
    return fault_of(number.place.value(block), number) == nullptr;
  });
}

// Tells of the numbers that cannot be written.
void lose_numbers(const XmlValues &values, const SDBlk &block, const Numbers &numbers,
                  const XmlPath &path) {
  for (const Number &number : numbers) {
    const char *fault = fault_of(number.place.value(block), number);
    if (fault != nullptr) values.lose(block, {&path, number.element}, fault);
  }
}

// Writes the numbers, but for those that cannot be written.
void write_numbers(const XmlValues &values, const SDBlk &block, const Numbers &numbers) {
  for (const Number &number : numbers) {
    const SDBlkEntry *entry = number.place.value(block);
    if (entry == nullptr || fault_of(entry, number) != nullptr) continue;
    values.xml().element(number.element, entry->value.d);
  }
}

// "NET_STA" or "NET_STA_CHA_LO", for people.
std::string name_of(const EpochKey &key) {
  std::string name;
  name.append(key.network()).append("_").append(key.station());
  if (!key.channel().empty() || !key.location().empty()) {
    name.append("_").append(key.channel());
    if (!key.location().empty()) name.append("_").append(key.location());
  }
  return utf8_text(name);
}

// The text of a station's network identifier, and the blockette 33 that has it; no text is null.
struct NetworkText {
  explicit NetworkText(const SDBlk &station) {
    static const Place identifier(50, "net_gid");
    static const Place description(33, "descr");
    const SDBlkEntry *code = identifier.value(station);
    block = code == nullptr ? nullptr : referred(station, *code);
    entry = block == nullptr ? nullptr : description.value(*block);
    if (entry != nullptr && entry->value.s[0] == '\0') entry = nullptr;
  }

  const SDBlk *block;
  const SDBlkEntry *entry;
};

// The fields of blockettes 51 and 59.
struct CommentFields {
  explicit CommentFields(std::int32_t type)
      : start(type, "time"), end(type, "endtime"), code(type, "cid") {}

  Place start;
  Place end;
  Place code;
};

// ---- elements ----

void write_code(const XmlValues &values, const SDBlk &block, const char *attribute,
                const Place &place, const XmlPath &path) {
  const SDBlkEntry *code = place.value(block);
  const XmlPath here = {&path, attribute};
  if (code == nullptr) values.lose(block, here, kNoValue);
  values.xml().attribute(attribute, code == nullptr ? "" : values.text(block, *code, here));
}

void write_times(const XmlValues &values, const SDBlkEntry *start, const SDBlkEntry *end) {
  const std::string start_text = XmlValues::time(start);
  const std::string end_text = XmlValues::end_time(end);
  if (!start_text.empty()) values.xml().attribute("startDate", start_text);
  if (!end_text.empty()) values.xml().attribute("endDate", end_text);
}

void write_comment(const XmlValues &values, const std::string &text, const SDBlkEntry *start,
                   const SDBlkEntry *end) {
  const std::string start_text = XmlValues::time(start);
  const std::string end_text = XmlValues::end_time(end);
  values.xml().start("Comment");
  values.xml().element("Value", text);
  if (!start_text.empty()) values.xml().element("BeginEffectiveTime", start_text);
  if (!end_text.empty()) values.xml().element("EndEffectiveTime", end_text);
  values.xml().end();
}

// A blockette 51 or 59 of the element at a path.
void write_comment(const XmlValues &values, const SDBlk &block, const XmlPath &path) {
  static const CommentFields of_station(51);
  static const CommentFields of_channel(59);
  static const Place comment(31, "comment");
  const CommentFields &fields = block.blockette_type == 51 ? of_station : of_channel;
  const SDBlkEntry *code = fields.code.value(block);
  const SDBlk *found = code == nullptr ? nullptr : referred(block, *code);
  const SDBlkEntry *text = found == nullptr ? nullptr : comment.value(*found);
  const XmlPath here = {&path, "Comment/Value"};
  if (text == nullptr) {
    values.lose(block, here, "the comment is not defined");
    return;
  }
  write_comment(values, values.text(*found, *text, here), fields.start.value(block),
                fields.end.value(block));
}

void write_site(const XmlValues &values, const SDBlk &station) {
  static const Place site(50, "name");
  constexpr XmlPath path = {&kStationPath, "Site/Name"};
  const SDBlkEntry *name = site.value(station);
  if (name == nullptr) values.lose(station, path, kNoValue);
  values.xml().start("Site");
  values.xml().element("Name", name == nullptr ? "" : values.text(station, *name, path));
  values.xml().end();
}

void write_channel_count(const XmlValues &values, const SDBlk &station) {
  static const Place count(50, "nchans");
  const SDBlkEntry *entry = count.value(station);
  if (entry == nullptr) return;
  const char *const element = "TotalNumberChannels";
  if (entry->value.i < 0) {
    values.lose(station, {&kStationPath, element}, "is out of range");
  } else {
    values.xml().element(element, std::to_string(entry->value.i));
  }
}

// What follows the comments of a channel, but for its response.
void write_channel_values(const XmlValues &values, const SDBlk &channel) {
  static const Place calibration_units(52, "cunits");
  write_numbers(values, channel, channel_numbers());
  lose_numbers(values, channel, optional_channel_numbers(), kChannelPath);
  write_numbers(values, channel, optional_channel_numbers());
  const SDBlk *units = unit_of(channel, calibration_units.value(channel));
  if (units != nullptr) values.units("CalibrationUnits", *units, kChannelPath);
}

// ---- the epochs of one volume, as they are met ----

// Starts that the document does not show are the same.
EpochKey key_of(const EpochCodes &codes, const SDBlkEntry *start) {
  return EpochKey(codes.network, codes.station, codes.location, codes.channel,
                  XmlValues::time(start).empty() ? nullptr : start);
}

// What a network has in the document.
struct Network {
  std::int32_t first = 0;          // the position of its first station
  std::int32_t described = kNone;  // of the first one with a description
};

struct Epochs {
  EpochIndex stations;
  EpochIndex channels;
  std::map<std::string, Network, std::less<>> networks;
};

// Fills the index from one volume.
class FirstReading {
 public:
  FirstReading(XmlLevel level, EpochChoice *choice, Epochs *epochs, std::int32_t volume)
      : level_(level), choice_(choice), epochs_(epochs), volume_(volume) {}

  void take(const SDBlk &block, const SDBlkPlace &place);
  // At the end of the volume.
  void finish();
  // Called for a channel that stands in no station, at its blockette.
  std::function<void(const SDBlk &block, const EpochKey &key)> lose_channel;
  [[nodiscard]] const std::string &organization() const { return organization_; }

 private:
  void begin_station(const SDBlk &block, const SDBlkPlace &place);
  void begin_channel(const SDBlk &block, const SDBlkPlace &place);
  void add_station();
  // Notes that a block belongs to an epoch.
  static void extend(IndexedEpoch *epoch, const SDBlk &block) {
    epoch->last = static_cast<std::int32_t>(sdblk_block_number(&block) - epoch->place.block);
  }

  XmlLevel level_;
  EpochChoice *choice_;
  Epochs *epochs_;
  std::int32_t volume_;
  Roles roles_;
  IndexedEpoch station_ = {};  // the one that is open
  bool in_station_ = false;
  bool alone_ = false;                     // it has no channel yet
  bool wanted_ = false;                    // also without a channel
  bool described_ = false;                 // its network has a description
  bool has_place_ = false;                 // it can be written
  std::int32_t station_position_ = kNone;  // where it was added
  std::int32_t channel_position_ = kNone;
  std::string organization_;
};

void FirstReading::take(const SDBlk &block, const SDBlkPlace &place) {
  static const Place organization(10, "orig_org");
  if (block.blockette_type == 10 && organization_.empty()) organization_ = organization.text(block);
  switch (roles_.of(block)) {
    case Role::none: break;
    case Role::station: begin_station(block, place); break;
    case Role::channel: begin_channel(block, place); break;
    case Role::station_comment:
      extend(&station_, block);
      if (station_position_ != kNone) extend(&epochs_->stations[station_position_], block);
      break;
    case Role::channel_comment:
    case Role::response:
      if (channel_position_ != kNone) extend(&epochs_->channels[channel_position_], block);
      break;
  }
}

void FirstReading::begin_station(const SDBlk &block, const SDBlkPlace &place) {
  static const Place network(50, "net");
  static const Place station(50, "sta");
  static const Place start(50, "time");
  static const Place end(50, "endtime");
  finish();
  const EpochCodes codes = {network.text(block), station.text(block), "", ""};
  station_ = {};
  station_.key = key_of(codes, start.value(block));
  station_.place = place;
  station_.volume = volume_;
  in_station_ = true;
  alone_ = true;
  wanted_ = choice_->takes(codes, start.value(block), end.value(block));
  described_ = NetworkText(block).entry != nullptr;
  has_place_ = has_all(block, station_numbers());
}

void FirstReading::begin_channel(const SDBlk &block, const SDBlkPlace &place) {
  static const Place location(52, "loc");
  static const Place channel(52, "chan");
  static const Place start(52, "time");
  static const Place end(52, "endtime");
  alone_ = false;
  channel_position_ = kNone;
  const EpochCodes codes = {station_.key.network(), station_.key.station(), location.text(block),
                            channel.text(block)};
  if (!choice_->takes(codes, start.value(block), end.value(block))) return;
  IndexedEpoch epoch;
  epoch.key = key_of(codes, start.value(block));
  if (!in_station_) {
    lose_channel(block, epoch.key);
    return;
  }
  add_station();
  if (level_ < XmlLevel::channel || !has_place_) return;
  epoch.place = place;
  epoch.volume = volume_;
  epoch.station = station_position_;
  channel_position_ = epochs_->channels.add(epoch);
  if (!has_all(block, channel_numbers())) epochs_->channels.lose(channel_position_);
}

void FirstReading::add_station() {
  if (station_position_ != kNone) return;
  station_position_ = epochs_->stations.add(station_);
  if (!has_place_) epochs_->stations.lose(station_position_);
  const auto [found, is_new] = epochs_->networks.try_emplace(std::string(station_.key.network()));
  Network &network = found->second;
  if (is_new) network.first = station_position_;
  if (described_ && network.described == kNone) network.described = station_position_;
}

void FirstReading::finish() {
  if (in_station_ && alone_ && wanted_) add_station();
  in_station_ = false;
  station_position_ = kNone;
  channel_position_ = kNone;
}

}  // namespace

// ---- the document ----

class StationXml::Document {
 public:
  Document(const ViewOptions &options, StationXmlOptions document, StationXmlListener listener)
      : options_(std::move(document)),
        listener_(std::move(listener)),
        choice_(options_.epochs),
        shelf_(options.record_length, listener_.lose_volume),
        losses_(listener_.lose) {}
  ~Document();
  Document(const Document &) = delete;
  Document &operator=(const Document &) = delete;

  Outcome add(const Source &source);
  [[nodiscard]] bool is_empty() const { return epochs_.stations.count() == 0; }
  bool write(LineSink *sink);

 private:
  // Writes an element that is compared, its TotalNumberChannels left out.
  using Compare = void (Document::*)(const XmlValues &values, std::int32_t position);

  void cut(std::int32_t stations, std::int32_t channels);
  void find_equal(EpochIndex *index, const XmlPath &path, Compare compare);
  void settle(EpochIndex *index, const std::vector<std::int32_t> &same, const XmlPath &path);
  void tell_difference(const IndexedEpoch &epoch, const IndexedEpoch &other, const XmlPath &path);
  std::uint64_t digest_of(const IndexedEpoch &epoch, std::int32_t position, Compare compare);
  [[nodiscard]] std::vector<std::int32_t> station_order() const;
  [[nodiscard]] std::vector<std::int32_t> channel_order(
      const std::vector<std::int32_t> &stations) const;

  bool go_to(const IndexedEpoch &epoch);
  SDBlk *next_block();
  void read_again(const SDBlkPlace &place, const ResponseXml::Take &take);
  template <typename Take>
  void each_block(const IndexedEpoch &epoch, Take take);

  void write_root(Xml *xml);
  void write_networks(Xml *xml);
  void begin_network(Xml *xml, std::int32_t position);
  void begin_epoch(const IndexedEpoch &epoch, bool silent) {
    losses_.begin(shelf_.name(epoch.volume), name_of(epoch.key), silent);
  }
  bool begin_station(const XmlValues &values, std::int32_t position, bool compares);
  void compare_station(const XmlValues &values, std::int32_t position);
  void write_station_description(const XmlValues &values, const SDBlk &station,
                                 bool compares) const;
  void write_channel(const XmlValues &values, std::int32_t position);

  StationXmlOptions options_;
  StationXmlListener listener_;
  EpochChoice choice_;
  VolumeShelf shelf_;
  Losses losses_;
  Epochs epochs_;
  std::string source_;
  // The volume that is being read, and the blocks of one epoch: the first, those that are kept, and
  // the one that was read last.
  SDBlkVol *vol_ = nullptr;
  std::vector<SDBlk *> blocks_;
  std::size_t kept_ = 0;
  std::string network_text_;  // the description of the network that is being written
};

StationXml::Document::~Document() {
  for (SDBlk *block : blocks_) sdblk_free(block);
}

// ---- the first reading ----

Outcome StationXml::Document::add(const Source &source) {
  const std::int32_t stations = epochs_.stations.count();
  const std::int32_t channels = epochs_.channels.count();
  const std::int32_t volume = shelf_.count();
  FirstReading reading(options_.level, &choice_, &epochs_, volume);
  reading.lose_channel = [&](const SDBlk &block, const EpochKey &key) {
    losses_.begin(source.name, name_of(key), false);
    losses_.tell(block.file_offset, kChannelPath, "the channel stands in no station");
  };
  const Outcome outcome = shelf_.add(
      source, [&](const SDBlk &block, const SDBlkPlace &place) { reading.take(block, place); });
  reading.finish();
  if (outcome == Outcome::unreadable) cut(stations, channels);
  if (epochs_.stations.count() == stations) {
    shelf_.drop_last();
  } else if (source_.empty()) {
    source_ = reading.organization();
  }
  return outcome;
}

// Takes back what a volume has added.
void StationXml::Document::cut(std::int32_t stations, std::int32_t channels) {
  epochs_.stations.cut(stations);
  epochs_.channels.cut(channels);
  std::erase_if(epochs_.networks, [=](const auto &item) { return item.second.first >= stations; });
  for (auto &[code, network] : epochs_.networks) {
    if (network.described >= stations) network.described = kNone;
  }
}

// ---- epochs that are the same ----

// Finds the epochs of the same key, and among those the equal ones.
void StationXml::Document::find_equal(EpochIndex *index, const XmlPath &path, Compare compare) {
  std::vector<std::int32_t> order = index->by_key();
  std::erase_if(order, [index](std::int32_t p) { return (*index)[p].same_as == kLostEpoch; });
  const auto is_same = [index](std::int32_t a, std::int32_t b) {
    return (*index)[a].key == (*index)[b].key;
  };
  std::vector<std::vector<std::int32_t>> groups;
  std::vector<std::int32_t> members;
  for (auto first = order.begin(); first != order.end();) {
    const auto last =
        std::find_if(first, order.end(), [&](std::int32_t p) { return !is_same(*first, p); });
    if (last - first > 1) {
      groups.emplace_back(first, last);
      members.insert(members.end(), first, last);
    }
    first = last;
  }
  // In the order of the volumes, so that each is opened once.
  std::sort(members.begin(), members.end());
  for (const std::int32_t position : members) {
    (*index)[position].digest = digest_of((*index)[position], position, compare);
  }
  for (const auto &group : groups) settle(index, group, path);
}

std::uint64_t StationXml::Document::digest_of(const IndexedEpoch &epoch, std::int32_t position,
                                              Compare compare) {
  Digest digest;
  Xml xml(&digest);
  begin_epoch(epoch, true);
  (this->*compare)(XmlValues(&xml, &losses_), position);
  xml.flush();
  return digest.sum();
}

void StationXml::Document::settle(EpochIndex *index, const std::vector<std::int32_t> &same,
                                  const XmlPath &path) {
  for (auto member = same.begin() + 1; member != same.end(); ++member) {
    IndexedEpoch &epoch = (*index)[*member];
    const auto equal = std::find_if(same.begin(), member, [&](std::int32_t before) {
      return (*index)[before].digest == epoch.digest;
    });
    epoch.same_as = *equal;
    if (equal == member) tell_difference(epoch, (*index)[same.front()], path);
  }
}

void StationXml::Document::tell_difference(const IndexedEpoch &epoch, const IndexedEpoch &other,
                                           const XmlPath &path) {
  if (!go_to(epoch)) return;
  listener_.tell({shelf_.name(epoch.volume), blocks_[0]->file_offset, path.text(),
                  "differs from that of the same start in " + shelf_.name(other.volume) + " (" +
                      name_of(epoch.key) + ")"});
}

// ---- the second reading ----

// Goes to the first blockette of an epoch; false when its volume is lost.
bool StationXml::Document::go_to(const IndexedEpoch &epoch) {
  vol_ = shelf_.open(epoch.volume);
  if (vol_ == nullptr) return false;
  sdblk_go_to(vol_, &epoch.place);
  kept_ = 0;
  SDBlk *block = next_block();
  if (block == nullptr) return false;
  kept_ = 1;
  if (sdblk_unstuffblk(block) < 0) throw std::bad_alloc();
  return true;
}

// The next block of the volume, in the place of one that is not kept.
SDBlk *StationXml::Document::next_block() {
  if (kept_ == blocks_.size()) blocks_.push_back(nullptr);
  const int result = sdblk_parseblk(vol_, &blocks_[kept_]);
  if (result < 0) throw std::bad_alloc();
  return result == SDBLK_EOF ? nullptr : blocks_[kept_];
}

// Takes what belongs to an epoch, decoded; take tells whether the block is kept.
template <typename Take>
void StationXml::Document::each_block(const IndexedEpoch &epoch, Take take) {
  const bool is_channel = blocks_[0]->blockette_type == 52;
  const bool with_response = options_.level >= XmlLevel::response;
  for (std::int32_t left = epoch.last; left > 0; --left) {
    const SDBlkPlace place = sdblk_place(vol_);
    SDBlk *block = next_block();
    if (block == nullptr) return;
    const std::int32_t type = block->blockette_type;
    const bool belongs =
        is_channel ? type == 59 || (is_response(type) && with_response) : type == 51;
    if (!belongs) continue;
    if (sdblk_unstuffblk(block) < 0) throw std::bad_alloc();
    if (take(*block, place)) ++kept_;
  }
}

// Hands out the responses of a channel once more, decoded, from a place on.
void StationXml::Document::read_again(const SDBlkPlace &place, const ResponseXml::Take &take) {
  sdblk_go_to(vol_, &place);
  for (;;) {
    SDBlk *block = next_block();
    if (block == nullptr) return;
    if (!is_response(block->blockette_type)) continue;
    if (sdblk_unstuffblk(block) < 0) throw std::bad_alloc();
    if (!take(*block)) return;
  }
}

// ---- the document ----

std::vector<std::int32_t> StationXml::Document::station_order() const {
  // By the first station of the network, then as they were met.
  std::vector<std::pair<std::int32_t, std::int32_t>> stations;
  for (std::int32_t i = 0; i < epochs_.stations.count(); ++i) {
    const IndexedEpoch &station = epochs_.stations[i];
    if (station.same_as != i && station.same_as != kLostEpoch) continue;
    stations.emplace_back(epochs_.networks.find(station.key.network())->second.first, i);
  }
  std::sort(stations.begin(), stations.end());
  std::vector<std::int32_t> order;
  order.reserve(stations.size());
  for (const auto &[network, station] : stations) order.push_back(station);
  return order;
}

// By their stations, then as they were met.
std::vector<std::int32_t> StationXml::Document::channel_order(
    const std::vector<std::int32_t> &stations) const {
  std::vector<std::int32_t> ranks(static_cast<std::size_t>(epochs_.stations.count()));
  for (std::size_t i = 0; i < stations.size(); ++i) {
    ranks[static_cast<std::size_t>(stations[i])] = static_cast<std::int32_t>(i);
  }
  const auto rank_of = [&](std::int32_t channel) {
    const std::int32_t station = epochs_.channels[channel].station;
    return ranks[static_cast<std::size_t>(epochs_.stations[station].same_as)];
  };
  std::vector<std::int32_t> order;
  for (std::int32_t i = 0; i < epochs_.channels.count(); ++i) {
    const std::int32_t same_as = epochs_.channels[i].same_as;
    if (same_as == i || same_as == kLostEpoch) order.push_back(i);
  }
  std::stable_sort(order.begin(), order.end(),
                   [&](std::int32_t a, std::int32_t b) { return rank_of(a) < rank_of(b); });
  return order;
}

bool StationXml::Document::write(LineSink *sink) {
  if (options_.level >= XmlLevel::station) {
    find_equal(&epochs_.stations, kStationPath, &Document::compare_station);
  }
  if (options_.level >= XmlLevel::channel) {
    find_equal(&epochs_.channels, kChannelPath, &Document::write_channel);
  }
  Xml xml(sink);
  write_root(&xml);
  write_networks(&xml);
  xml.end();
  shelf_.close();
  return xml.flush();
}

void StationXml::Document::write_root(Xml *xml) {
  std::tm time = {};
  gmtime_r(&options_.created, &time);
  std::array<char, 40> created = {};
  std::strftime(created.data(), created.size(), "%Y-%m-%dT%H:%M:%SZ", &time);
  bool left_out = false;
  xml->declare();
  xml->start("FDSNStationXML");
  xml->attribute("xmlns", "http://www.fdsn.org/xml/station/1");
  xml->attribute("schemaVersion", "1.2");
  xml->element("Source", xml_text(source_, &left_out));
  xml->element("Module", options_.module);
  xml->element("Created", created.data());
}

void StationXml::Document::write_networks(Xml *xml) {
  const std::vector<std::int32_t> stations = station_order();
  const std::vector<std::int32_t> channels = channel_order(stations);
  const XmlValues values(xml, &losses_);
  auto channel = channels.begin();
  for (auto station = stations.begin(); station != stations.end(); ++station) {
    const IndexedEpoch &epoch = epochs_.stations[*station];
    const bool is_new = station == stations.begin() ||
                        epochs_.stations[*(station - 1)].key.network() != epoch.key.network();
    if (is_new) {
      if (station != stations.begin()) xml->end();
      begin_network(xml, *station);
    }
    if (options_.level < XmlLevel::station) continue;
    begin_epoch(epoch, false);
    const bool begun = begin_station(values, *station, false);
    for (; channel != channels.end(); ++channel) {
      const IndexedEpoch &next = epochs_.channels[*channel];
      if (epochs_.stations[next.station].same_as != *station) break;
      begin_epoch(next, false);
      if (begun) write_channel(values, *channel);
    }
    if (begun) xml->end();
  }
  xml->end();
}

// At the network's first station.
void StationXml::Document::begin_network(Xml *xml, std::int32_t position) {
  static const Place code(50, "net");
  const XmlValues values(xml, &losses_);
  const IndexedEpoch &first = epochs_.stations[position];
  const Network &network = epochs_.networks.find(first.key.network())->second;
  xml->start("Network");
  begin_epoch(first, false);
  if (go_to(first)) {
    write_code(values, *blocks_[0], "code", code, kNetworkPath);
  } else {
    xml->attribute("code", std::string(first.key.network()));
  }
  network_text_.clear();
  if (network.described == kNone) return;
  const IndexedEpoch &described = epochs_.stations[network.described];
  begin_epoch(described, false);
  if (!go_to(described)) return;
  const NetworkText text(*blocks_[0]);
  if (text.entry == nullptr) return;
  network_text_ = values.text(*text.block, *text.entry, {&kNetworkPath, "Description"});
  xml->element("Description", network_text_);
}

void StationXml::Document::compare_station(const XmlValues &values, std::int32_t position) {
  if (begin_station(values, position, true)) values.xml().end();
}

// Writes all of a station but its channels; the element stays open.  False when there is none.
bool StationXml::Document::begin_station(const XmlValues &values, std::int32_t position,
                                         bool compares) {
  static const Place code(50, "sta");
  static const Place start(50, "time");
  static const Place end(50, "endtime");
  const IndexedEpoch &epoch = epochs_.stations[position];
  if (!go_to(epoch)) return false;
  const SDBlk &block = *blocks_[0];
  if (epoch.same_as == kLostEpoch) {
    lose_numbers(values, block, station_numbers(), kStationPath);
    return false;
  }
  Xml &xml = values.xml();
  xml.start("Station");
  write_code(values, block, "code", code, kStationPath);
  write_times(values, start.value(block), end.value(block));
  write_station_description(values, block, compares);
  each_block(epoch, [&](const SDBlk &comment, const SDBlkPlace &) {
    write_comment(values, comment, kStationPath);
    return false;
  });
  write_numbers(values, block, station_numbers());
  write_site(values, block);
  if (!compares) write_channel_count(values, block);
  return true;
}

// The text of its network identifier, where it is not the network's.
void StationXml::Document::write_station_description(const XmlValues &values, const SDBlk &station,
                                                     bool compares) const {
  const NetworkText text(station);
  if (text.entry == nullptr) return;
  bool left_out = false;
  if (!compares && xml_text(text.entry->value.s, &left_out) == network_text_) return;
  values.xml().element("Description",
                       values.text(*text.block, *text.entry, {&kStationPath, "Description"}));
}

void StationXml::Document::write_channel(const XmlValues &values, std::int32_t position) {
  static const Place code(52, "chan");
  static const Place location(52, "loc");
  static const Place start(52, "time");
  static const Place end(52, "endtime");
  static const Place comment(52, "comment");
  const IndexedEpoch &epoch = epochs_.channels[position];
  if (!go_to(epoch)) return;
  const SDBlk &block = *blocks_[0];
  if (epoch.same_as == kLostEpoch) {
    lose_numbers(values, block, channel_numbers(), kChannelPath);
    return;
  }
  Xml &xml = values.xml();
  xml.start("Channel");
  write_code(values, block, "code", code, kChannelPath);
  write_times(values, start.value(block), end.value(block));
  write_code(values, block, "locationCode", location, kChannelPath);
  const SDBlkEntry *text = comment.value(block);
  if (text != nullptr && text->value.s[0] != '\0') {
    constexpr XmlPath path = {&kChannelPath, "Comment/Value"};
    write_comment(values, values.text(block, *text, path), nullptr, nullptr);
  }
  ResponseXml response(values, [this](const SDBlkPlace &place, const ResponseXml::Take &take) {
    read_again(place, take);
  });
  each_block(epoch, [&](const SDBlk &next, const SDBlkPlace &place) {
    if (next.blockette_type == 59) {
      write_comment(values, next, kChannelPath);
      return false;
    }
    return response.add(next, place);
  });
  write_channel_values(values, block);
  response.write();
  xml.end();
}

// ---- what others see ----

StationXml::StationXml(const ViewOptions &options, const StationXmlOptions &document,
                       StationXmlListener listener)
    : document_(std::make_unique<Document>(options, document, std::move(listener))) {}

StationXml::~StationXml() = default;

Outcome StationXml::add(const Source &source) { return document_->add(source); }

bool StationXml::is_empty() const { return document_->is_empty(); }

bool StationXml::write(LineSink *sink) { return document_->write(sink); }

}  // namespace tarvik
