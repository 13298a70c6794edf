#include "backoffice/SettingsDocument.h"

#include <cstring>
#include <functional>
#include <map>
#include <set>
#include <sstream>

#include <fmt/format.h>

#include "core/DateTime.h"
#include "core/Error.h"
#include "core/StrictXml.h"

namespace kitra::backoffice {
namespace {

constexpr const char* kRoot = "KitraConnectorSetting";

const std::set<std::string>& KnownAttributes(std::string_view element) {
    static const std::set<std::string> none;
    static const std::set<std::string> root = {
        "InvoiceTransDocument",         "CreditTransDocument",
        "StockTransDocument",           "CashEntranceTransDocument",
        "CashWithdrawalTransDocument",  "CustomerPaymentTransDocument",
        "CustomerPaymentAccountDocument", "SelfConsumptionTransDocument",
        "DefaultTenderPayment",         "DefaultTaxableGroup"};
    static const std::set<std::string> restaurant = {
        "Name",          "ServerName",       "ServerPort",         "ServerDBName",
        "ServerUser",    "ServerPassword",   "WorkstationID",      "ItemIDPrefix",
        "DefaultWarehouseID", "WasteWarehouseID", "DefaultSupplierID", "TransSerial",
        "StockManagement", "ImportDateEntities", "ImportDateTransactions"};
    static const std::set<std::string> tender = {"POSTenderID", "KitraTenderID"};
    static const std::set<std::string> group = {"TaxableGroupID", "KitraVAT"};
    if (element == kRoot) return root;
    if (element == "Restaurant") return restaurant;
    if (element == "Tender") return tender;
    if (element == "TaxableGroup") return group;
    return none;
}

bool IsKnownElement(std::string_view name) {
    return name == kRoot || name == "Restaurants" || name == "Restaurant" ||
           name == "TenderEquivalence" || name == "Tender" || name == "TaxableGroupEquivalence" ||
           name == "TaxableGroup";
}

// Line and column (from 1) of an offset into the text.
std::string Position(std::string_view text, std::ptrdiff_t offset) {
    long line = 1, column = 1;
    for (std::ptrdiff_t i = 0; i < offset && i < static_cast<std::ptrdiff_t>(text.size()); ++i) {
        if (text[static_cast<std::size_t>(i)] == '\n') {
            ++line;
            column = 1;
        } else if ((static_cast<unsigned char>(text[static_cast<std::size_t>(i)]) & 0xC0) != 0x80) {
            ++column;  // one column per character, not per byte
        }
    }
    return fmt::format("linha {}, coluna {}", line, column);
}

// How many characters a UTF-8 text holds (the log table counts characters, not bytes).
std::size_t Characters(std::string_view text) {
    std::size_t count = 0;
    for (char c : text) count += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    return count;
}

// The offset of the first byte that is not part of valid UTF-8 (or is a NUL); nothing if none.
std::optional<std::size_t> FirstNonText(std::string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (c == 0) return i;
        std::size_t length = c < 0x80 ? 1 : (c >> 5) == 0x6 ? 2 : (c >> 4) == 0xE ? 3 : (c >> 3) == 0x1E ? 4 : 0;
        if (length == 0 || i + length > text.size()) return i;
        for (std::size_t k = 1; k < length; ++k) {
            if ((static_cast<unsigned char>(text[i + k]) & 0xC0) != 0x80) return i;
        }
        i += length;
    }
    return std::nullopt;
}

// Every Restaurant element under the root's Restaurants elements.
void ForEachRestaurant(pugi::xml_node root, const std::function<void(pugi::xml_node)>& visit) {
    for (pugi::xml_node restaurants : root.children("Restaurants")) {
        for (pugi::xml_node restaurant : restaurants.children("Restaurant")) visit(restaurant);
    }
}

std::string Render(const pugi::xml_document& document) {
    std::ostringstream out;
    document.save(out, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
    return out.str();
}

// A name as the import and the log tell restaurants apart: without the blanks around it and
// without letter case (the connector's collection of restaurants compares names so, and a
// trailing blank is invisible in every list). Folds ASCII and the accented Latin letters.
std::string NameKey(std::string_view name) {
    const auto first = name.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) return {};
    name = name.substr(first, name.find_last_not_of(" \t\r\n") - first + 1);
    std::string key(name);
    for (std::size_t i = 0; i < key.size(); ++i) {
        const auto c = static_cast<unsigned char>(key[i]);
        if (c >= 'A' && c <= 'Z') {
            key[i] = static_cast<char>(c - 'A' + 'a');
        } else if (c == 0xC3 && i + 1 < key.size()) {
            const auto next = static_cast<unsigned char>(key[i + 1]);
            if (next >= 0x80 && next <= 0x9E && next != 0x97) key[i + 1] = static_cast<char>(next + 0x20);
            ++i;
        }
    }
    return key;
}

// Whether a text is a whole number written only in digits, from `low` to `high`.
bool IsWholeNumberIn(std::string_view text, long low, long high) {
    if (text.empty() || text.size() > 10 || text.find_first_not_of("0123456789") != std::string_view::npos)
        return false;
    const long value = std::stol(std::string(text));
    return value >= low && value <= high;
}

// The numbers of a restaurant that the import reads with its own lenient rules (the leading
// digits, the 16 bits of a rounded number, 0 for what is not a number) must be written so that
// it reads what the administrator wrote. A missing attribute is the connector's own default.
void NumberProblems(pugi::xml_node restaurant, const std::string& who, std::vector<std::string>& problems) {
    const std::string port = restaurant.attribute("ServerPort").value();
    if (!port.empty() && !IsWholeNumberIn(port, 1, 65535)) {
        problems.push_back(fmt::format(
            "{}a porta (ServerPort) '{}' não é um número de 1 a 65535 escrito só com algarismos; "
            "o controlador ligar-se-ia a outra porta. Deixe-a vazia para a porta 3306 do controlador.",
            who, port));
    }
    struct Field {
        const char* attribute;
        const char* what;
        long high;
        const char* why;
    };
    const Field fields[] = {
        {"WorkstationID", "o posto", 32767, "os documentos ficariam noutro posto"},
        {"DefaultWarehouseID", "o armazém", 32767, "o stock iria para outro armazém"},
        {"WasteWarehouseID", "o armazém de quebras", 32767, "as quebras iriam para outro armazém"},
        {"DefaultSupplierID", "o fornecedor", 2147483647L, "as compras ficariam noutro fornecedor"},
    };
    for (const Field& field : fields) {
        const pugi::xml_attribute attribute = restaurant.attribute(field.attribute);
        if (!attribute || IsWholeNumberIn(attribute.value(), 0, field.high)) continue;
        problems.push_back(fmt::format(
            "{}{} ({}) '{}' não é um número inteiro de 0 a {} escrito só com algarismos; a "
            "importação leria outro número e {}.",
            who, field.what, field.attribute, attribute.value(), field.high, field.why));
    }
    const pugi::xml_attribute stock = restaurant.attribute("StockManagement");
    if (stock && std::string_view(stock.value()) != "0" && std::string_view(stock.value()) != "1") {
        problems.push_back(fmt::format(
            "{}a gestão de stocks (StockManagement) '{}' não é 1 (sim) nem 0 (não); a importação "
            "só a lê ligada com 1.",
            who, stock.value()));
    }
}

}  // namespace

SettingsDocument SettingsDocument::Parse(std::string_view text) {
    if (text.find_first_not_of(" \t\r\n") == std::string_view::npos)
        throw Error("O texto das configurações está vazio.");
    if (const auto bad = FirstNonText(text)) {
        throw Error(fmt::format(
            "O ficheiro não é texto UTF-8 (byte {:#04x} na {}): as configurações são um texto XML.",
            static_cast<unsigned char>(text[*bad]), Position(text, static_cast<std::ptrdiff_t>(*bad))));
    }
    SettingsDocument settings;
    const unsigned options = pugi::parse_default | pugi::parse_fragment;
    const pugi::xml_parse_result result =
        settings.document_.load_buffer(text.data(), text.size(), options, pugi::encoding_utf8);
    if (!result) {
        throw Error(fmt::format("O XML não é válido na {}: {}.", Position(text, result.offset),
                                result.description()));
    }
    int elements = 0;
    for (pugi::xml_node node : settings.document_.children()) {
        if (node.type() == pugi::node_element) {
            if (++elements == 2) {
                throw Error(fmt::format("O XML não é válido na {}: há um segundo elemento de topo <{}>.",
                                        Position(text, node.offset_debug()), node.name()));
            }
        } else if (node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata) {
            throw Error(fmt::format("O XML não é válido na {}: há texto fora do elemento de topo.",
                                    Position(text, node.offset_debug())));
        }
    }
    if (elements == 0) throw Error("O XML não tem nenhum elemento.");
    if (const auto bad = FindNonStrictXml(text)) {
        throw Error(fmt::format(
            "O XML não é válido no elemento que começa na {}: {} tem um \"&\" que não é uma "
            "referência válida, um \"<\" (escreva &amp; e &lt;) ou um carácter de controlo.",
            Position(text, bad->elementOffset), bad->where));
    }
    struct DuplicateFinder : pugi::xml_tree_walker {
        pugi::xml_node found;
        bool for_each(pugi::xml_node& node) override {
            std::set<std::string> names;
            for (pugi::xml_attribute a : node.attributes()) {
                if (!names.insert(a.name()).second) found = node;
            }
            return !found;
        }
    } duplicates;
    settings.document_.traverse(duplicates);
    if (duplicates.found) {
        throw Error(fmt::format("O XML não é válido na {}: o elemento <{}> repete um atributo.",
                                Position(text, duplicates.found.offset_debug()),
                                duplicates.found.name()));
    }
    if (std::strcmp(settings.Root().name(), kRoot) != 0) {
        throw Error(fmt::format(
            "O elemento de topo é <{}>; as configurações do conector começam por <{}>.",
            settings.Root().name(), kRoot));
    }
    return settings;
}

std::vector<RestaurantSettings> SettingsDocument::Restaurants() const {
    std::vector<RestaurantSettings> restaurants;
    ForEachRestaurant(Root(), [&](pugi::xml_node element) {
        RestaurantSettings r;
        r.name = element.attribute("Name").value();
        r.server = element.attribute("ServerName").value();
        r.port = element.attribute("ServerPort").value();
        r.database = element.attribute("ServerDBName").value();
        r.user = element.attribute("ServerUser").value();
        r.password = element.attribute("ServerPassword").value();
        r.importDateEntities = element.attribute("ImportDateEntities").value();
        r.importDateTransactions = element.attribute("ImportDateTransactions").value();
        r.series = element.attribute("TransSerial").value();
        r.workstation = element.attribute("WorkstationID").value();
        r.defaultWarehouse = element.attribute("DefaultWarehouseID").value();
        r.wasteWarehouse = element.attribute("WasteWarehouseID").value();
        r.supplier = element.attribute("DefaultSupplierID").value();
        restaurants.push_back(std::move(r));
    });
    return restaurants;
}

std::optional<std::string> ConnectionValueProblem(const std::string& what, const std::string& value) {
    if (value.find_first_of(";{}") == std::string::npos) return std::nullopt;
    return fmt::format(
        "{} '{}' tem \";\", \"{{\" ou \"}}\": a cadeia de ligação que a importação constrói "
        "partir-se-ia aí (uma palavra-passe nunca entraria, um nome de base de dados poderia "
        "apontar para outro servidor). Mude o valor no servidor do restaurante.",
        what, what == "A palavra-passe" ? std::string("********") : value);
}

std::string RestaurantNameKey(std::string_view name) { return NameKey(name); }

std::vector<std::string> SharedSeriesProblems(const std::vector<RestaurantSettings>& restaurants) {
    std::vector<std::string> problems;
    std::map<std::string, std::vector<const RestaurantSettings*>> bySeries;
    std::vector<std::string> order;
    for (const RestaurantSettings& r : restaurants) {
        if (r.series.empty()) continue;
        std::string folded = r.series;
        for (char& c : folded) {
            if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
        }
        auto& sharing = bySeries[folded];
        if (sharing.empty()) order.push_back(folded);
        sharing.push_back(&r);
    }
    for (const std::string& series : order) {
        const auto& sharing = bySeries[series];
        if (sharing.size() < 2) continue;
        std::string names;
        for (std::size_t i = 0; i < sharing.size(); ++i) {
            names += (i == 0 ? "" : i + 1 == sharing.size() ? " e " : ", ") + ("'" + sharing[i]->name + "'");
        }
        problems.push_back(fmt::format(
            "Os restaurantes {} usam a mesma série de documentos '{}' (TransSerial): os documentos "
            "de um substituiriam os do outro com os mesmos números. Dê a cada restaurante a sua "
            "série ('kitra-host series add CÓDIGO DESCRIÇÃO').",
            names, sharing.front()->series));
    }
    return problems;
}

// Besides the problems above: a name that differs from another only in letter case or blanks,
// and a number the import would read as another one.
std::vector<std::string> SettingsDocument::Problems() const {
    std::vector<std::string> problems = SharedSeriesProblems(Restaurants());
    std::map<std::string, std::string> names;  // by NameKey: the first name written so
    std::vector<pugi::xml_node> elements;
    ForEachRestaurant(Root(), [&](pugi::xml_node element) { elements.push_back(element); });
    std::size_t index = 0;
    for (const RestaurantSettings& r : Restaurants()) {
        const std::string who = "Restaurante '" + r.name + "': ";
        const std::string key = NameKey(r.name);
        if (key.empty()) {
            problems.push_back("Há um restaurante sem nome (atributo Name)" +
                               (r.name.empty() ? std::string(".") : " (o nome '" + r.name + "' só tem espaços)."));
        } else if (const auto [first, added] = names.emplace(key, r.name); !added) {
            problems.push_back(first->second == r.name
                                   ? who + "o nome repete-se; cada restaurante tem um nome seu."
                                   : who + "o nome é o de '" + first->second +
                                         "' com outras maiúsculas ou espaços, que a importação e o "
                                         "log de importações não distinguem; cada restaurante tem um nome seu.");
        }
        NumberProblems(elements[index++], who, problems);
        if (Characters(r.name) > kRestaurantNameLimit) {
            problems.push_back(fmt::format(
                "{}o nome tem mais de {} caracteres, que é o que o log de importações guarda.",
                who, kRestaurantNameLimit));
        }
        if (!IsIsoDateTime(r.importDateEntities)) {
            problems.push_back(who + "a data ImportDateEntities '" + r.importDateEntities +
                               "' não é uma data \"aaaa-mm-dd hh:mm:ss\".");
        }
        if (!IsIsoDateTime(r.importDateTransactions)) {
            problems.push_back(who + "a data ImportDateTransactions '" + r.importDateTransactions +
                               "' não é uma data \"aaaa-mm-dd hh:mm:ss\".");
        }
        for (const auto& [what, value] : {std::pair<std::string, std::string>{"O servidor", r.server},
                                          {"A base de dados", r.database},
                                          {"O utilizador", r.user},
                                          {"A palavra-passe", r.password},
                                          {"A porta", r.port}}) {
            if (auto problem = ConnectionValueProblem(what, value)) problems.push_back(who + *problem);
        }
    }
    return problems;
}

std::vector<std::string> SettingsDocument::Warnings() const {
    struct Finder : pugi::xml_tree_walker {
        std::vector<std::string> warnings;
        bool for_each(pugi::xml_node& node) override {
            if (node.type() != pugi::node_element) return true;
            if (!IsKnownElement(node.name())) {
                warnings.push_back(fmt::format("Elemento desconhecido <{}> (é ignorado).", node.name()));
                return true;
            }
            const std::set<std::string>& known = KnownAttributes(node.name());
            for (pugi::xml_attribute a : node.attributes()) {
                if (!known.contains(a.name())) {
                    warnings.push_back(fmt::format(
                        "Atributo desconhecido {} no elemento <{}> (é ignorado; está bem escrito?).",
                        a.name(), node.name()));
                }
            }
            return true;
        }
    } finder;
    pugi::xml_node root = Root();
    finder.for_each(root);
    root.traverse(finder);
    return finder.warnings;
}

std::string SettingsDocument::SetImportDates(const std::string& restaurant,
                                             const std::optional<std::string>& entities,
                                             const std::optional<std::string>& transactions) {
    bool found = false;
    std::string stored;
    ForEachRestaurant(Root(), [&](pugi::xml_node element) {
        if (found || NameKey(restaurant) != NameKey(element.attribute("Name").value())) return;
        found = true;
        stored = element.attribute("Name").value();
        const auto set = [&](const char* name, const std::optional<std::string>& value) {
            if (!value) return;
            pugi::xml_attribute attribute = element.attribute(name);
            if (!attribute) attribute = element.append_attribute(name);
            attribute.set_value(value->c_str());
        };
        set("ImportDateEntities", entities);
        set("ImportDateTransactions", transactions);
    });
    if (!found) throw Error("Não há nenhum restaurante '" + restaurant + "' nas configurações.");
    return stored;
}

std::vector<std::string> SettingsDocument::KeepFromStored(const SettingsDocument& stored,
                                                          bool datesFromFile) {
    std::map<std::string, pugi::xml_node> storedByName;
    ForEachRestaurant(stored.Root(), [&](pugi::xml_node element) {
        storedByName.emplace(NameKey(element.attribute("Name").value()), element);
    });
    std::vector<std::string> said;
    ForEachRestaurant(Root(), [&](pugi::xml_node element) {
        const std::string name = element.attribute("Name").value();
        const auto found = storedByName.find(NameKey(name));
        pugi::xml_attribute password = element.attribute("ServerPassword");
        if (password && std::string_view(password.value()) == kMaskedPassword) {
            if (found == storedByName.end() || !found->second.attribute("ServerPassword")) {
                throw Error("Restaurante '" + name + "': a palavra-passe está mascarada (" +
                            kMaskedPassword +
                            ") e não há nenhuma guardada para este restaurante; escreva-a no "
                            "ficheiro.");
            }
            password.set_value(found->second.attribute("ServerPassword").value());
        }
        if (found == storedByName.end()) return;
        for (const char* date : {"ImportDateEntities", "ImportDateTransactions"}) {
            const std::string before = found->second.attribute(date).value();
            pugi::xml_attribute attribute = element.attribute(date);
            if (!attribute) attribute = element.append_attribute(date);
            const std::string inFile = attribute.value();
            if (inFile == before) continue;
            if (datesFromFile) {
                said.push_back(fmt::format("Restaurante '{}': {} passa de {} para {} (do ficheiro).",
                                           name, date, before, inFile));
            } else {
                attribute.set_value(before.c_str());
                said.push_back(fmt::format(
                    "Restaurante '{}': {} fica {}, a data guardada (o ficheiro tem {}; para a "
                    "tomar do ficheiro, use --dates-from-file).",
                    name, date, before, inFile));
            }
        }
    });
    return said;
}

void SettingsDocument::SetRestaurantAttribute(const std::string& restaurant,
                                              const std::string& attribute,
                                              const std::string& value) {
    if (!KnownAttributes("Restaurant").contains(attribute)) {
        throw Error("'" + attribute + "' não é um atributo de um restaurante; os atributos são " +
                    [] {
                        std::string all;
                        for (const std::string& name : KnownAttributes("Restaurant"))
                            all += (all.empty() ? "" : ", ") + name;
                        return all;
                    }() +
                    ".");
    }
    bool found = false;
    ForEachRestaurant(Root(), [&](pugi::xml_node element) {
        if (found || NameKey(element.attribute("Name").value()) != NameKey(restaurant)) return;
        found = true;
        pugi::xml_attribute node = element.attribute(attribute.c_str());
        if (!node) node = element.append_attribute(attribute.c_str());
        node.set_value(value.c_str());
    });
    if (!found) throw Error("Não há nenhum restaurante '" + restaurant + "' nas configurações.");
}

std::string SettingsDocument::Text() const { return Render(document_); }

std::string SettingsDocument::MaskedText() const {
    pugi::xml_document masked;
    masked.reset(document_);
    ForEachRestaurant(masked.document_element(), [](pugi::xml_node element) {
        if (pugi::xml_attribute password = element.attribute("ServerPassword"))
            password.set_value(kMaskedPassword);
    });
    return Render(masked);
}

std::vector<RestaurantSettings> StoredRestaurants(const std::optional<std::string>& text) {
    if (!text) return {};
    try {
        return SettingsDocument::Parse(*text).Restaurants();
    } catch (const Error&) {
        return {};
    }
}

}  // namespace kitra::backoffice
