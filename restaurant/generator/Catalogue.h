#pragma once
// The words the generated restaurant is made of: Portuguese names, places and a menu.
#include <array>
#include <string_view>
#include <vector>

namespace kitra::restaurant::catalogue {

inline constexpr std::array<std::string_view, 40> kFirstNames = {
    "João", "Maria", "José", "Ana", "António", "Manuel", "Francisco", "Inês", "Rui", "Sofia",
    "Pedro", "Beatriz", "Tiago", "Mariana", "Luís", "Conceição", "Gonçalo", "Leonor", "Nuno",
    "Catarina", "Carlos", "Joana", "Miguel", "Rita", "Paulo", "Helena", "Ricardo", "Filipa",
    "André", "Teresa", "Vítor", "Fátima", "Sérgio", "Lúcia", "Rodrigo", "Patrícia", "Hugo",
    "Graça", "Duarte", "Márcia"};

inline constexpr std::array<std::string_view, 40> kSurnames = {
    "Silva", "Santos", "Ferreira", "Pereira", "Oliveira", "Costa", "Rodrigues", "Martins",
    "Jesus", "Sousa", "Fernandes", "Gonçalves", "Gomes", "Lopes", "Marques", "Alves", "Almeida",
    "Ribeiro", "Pinto", "Carvalho", "Teixeira", "Moreira", "Correia", "Mendes", "Nunes",
    "Soares", "Vieira", "Monteiro", "Cardoso", "Rocha", "Raposo", "Neves", "Coelho", "Cruz",
    "Cunha", "Simões", "Brandão", "Magalhães", "Falcão", "Antunes"};

inline constexpr std::array<std::string_view, 16> kCompanyWords = {
    "Café Central", "Construções", "Transportes", "Papelaria", "Farmácia", "Oficina",
    "Imobiliária", "Contabilidade", "Clínica Dentária", "Escola de Condução", "Padaria",
    "Talho", "Ótica", "Cabeleireiro", "Agência de Viagens", "Livraria"};

inline constexpr std::array<std::string_view, 4> kCompanySuffixes = {", Lda", " & Filhos, Lda",
                                                                     ", S.A.", ", Unipessoal Lda"};

struct Locality {
    std::string_view name;
    std::string_view postalPrefix;  // the four digits before the dash
    std::string_view phonePrefix;   // the landline's area code
};

inline constexpr std::array<Locality, 20> kLocalities = {{
    {"Lisboa", "1000", "21"},      {"Porto", "4000", "22"},     {"Braga", "4700", "253"},
    {"Coimbra", "3000", "239"},    {"Évora", "7000", "266"},    {"Faro", "8000", "289"},
    {"Setúbal", "2900", "265"},    {"Aveiro", "3800", "234"},   {"Viseu", "3500", "232"},
    {"Leiria", "2400", "244"},     {"Guimarães", "4800", "253"}, {"Funchal", "9000", "291"},
    {"Ponta Delgada", "9500", "296"}, {"Amadora", "2700", "21"}, {"Sintra", "2710", "21"},
    {"Cascais", "2750", "21"},     {"Almada", "2800", "21"},    {"Matosinhos", "4450", "22"},
    {"Santarém", "2000", "243"},   {"Viana do Castelo", "4900", "258"},
}};

inline constexpr std::array<std::string_view, 16> kStreets = {
    "Rua de Santa Catarina", "Avenida da Liberdade", "Rua Augusta", "Praça do Comércio",
    "Rua do Carmo", "Avenida da República", "Rua da Prata", "Largo do Chiado",
    "Rua Dom João IV", "Avenida dos Aliados", "Rua de São Bento", "Travessa do Fala-Só",
    "Rua Sá da Bandeira", "Avenida Almirante Reis", "Rua Dr. António José d'Almeida",
    "Estrada Nacional 125"};

inline constexpr std::array<std::string_view, 6> kSecondLines = {
    "2.º Esq.", "R/C Dto.", "Loja 3", "1.º Frente", "Bloco B, 4.º", "Edifício Atlântico"};

inline constexpr std::array<std::string_view, 4> kMailDomains = {"gmail.com", "sapo.pt",
                                                                 "hotmail.com", "outlook.pt"};

// Tax uids of the generated taxes table.
inline constexpr int kTaxNormal = 1;        // 23 %
inline constexpr int kTaxIntermediate = 2;  // 13 %
inline constexpr int kTaxReduced = 3;       // 6 %

struct Subfamily {
    std::string_view name;
    int tax;
    bool weighed;  // sold by weight: prices per kg, quantities in grams
    bool stocked;  // stock managed (bought-in goods)
    std::vector<std::pair<std::string_view, int>> items;  // name, price in cents
};

struct Family {
    std::string_view name;
    std::vector<Subfamily> subfamilies;
};

inline const std::vector<Family>& Menu() {
    static const std::vector<Family> menu = {
        {"Bebidas",
         {{"Águas", kTaxNormal, false, true,
           {{"Água Luso 0,5L", 150}, {"Água das Pedras", 180}, {"Água Castello", 170},
            {"Água Luso 1,5L", 300}}},
          {"Refrigerantes", kTaxNormal, false, true,
           {{"Coca-Cola", 220}, {"Sumol Laranja", 210}, {"Ice Tea Limão", 210},
            {"Compal Pêssego", 230}, {"7 Up", 210}}},
          {"Sumos Naturais", kTaxNormal, false, false,
           {{"Sumo de Laranja Natural", 350}, {"Limonada", 300}, {"Sumo de Maçã", 320}}},
          {"Cervejas", kTaxNormal, false, true,
           {{"Imperial", 160}, {"Caneca", 300}, {"Super Bock Mini", 150},
            {"Sagres sem Álcool", 180}}},
          {"Vinhos", kTaxNormal, false, true,
           {{"Vinho Tinto Alentejo (garrafa)", 1450}, {"Vinho Verde Branco (garrafa)", 1200},
            {"Copo de Vinho da Casa", 350}, {"Jarro de Sangria", 1600}}}}},
        {"Cafetaria",
         {{"Cafés", kTaxIntermediate, false, false,
           {{"Café", 80}, {"Galão", 150}, {"Meia de Leite", 140}, {"Carioca de Limão", 100},
            {"Abatanado", 110}}},
          {"Chás e Infusões", kTaxIntermediate, false, false,
           {{"Chá Preto", 150}, {"Infusão de Cidreira", 150}, {"Chá Verde", 160}}},
          {"Pastelaria", kTaxReduced, false, true,
           {{"Pastel de Nata", 130}, {"Bola de Berlim", 160}, {"Croissant Misto", 250},
            {"Queijada de Sintra", 150}}}}},
        {"Entradas",
         {{"Entradas Frias", kTaxIntermediate, false, false,
           {{"Azeitonas", 250}, {"Queijo Fresco", 350}, {"Presunto Pata Negra", 1250},
            {"Salada de Polvo", 850}}},
          {"Entradas Quentes", kTaxIntermediate, false, false,
           {{"Pão com Chouriço", 450}, {"Amêijoas à Bulhão Pato", 1450},
            {"Camarão al Ajillo", 1150}, {"Pica-Pau", 950}}},
          {"Sopas", kTaxIntermediate, false, false,
           {{"Caldo Verde", 300}, {"Sopa de Legumes", 280}, {"Canja de Galinha", 320}}}}},
        {"Pratos de Carne",
         {{"Grelhados", kTaxIntermediate, false, false,
           {{"Bitoque", 1150}, {"Costeletas de Porco", 1050}, {"Frango no Churrasco", 950},
            {"Entrecosto Grelhado", 1100}}},
          {"Assados", kTaxIntermediate, false, false,
           {{"Cabrito Assado", 1650}, {"Leitão à Bairrada", 1550}, {"Vitela Assada", 1450}}},
          {"Carnes ao Peso", kTaxIntermediate, true, false,
           {{"Picanha (kg)", 2890}, {"Posta Mirandesa (kg)", 3200}, {"Secretos de Porco (kg)", 2200}}}}},
        {"Pratos de Peixe",
         {{"Peixe Grelhado", kTaxIntermediate, false, false,
           {{"Dourada Grelhada", 1350}, {"Sardinhas Assadas", 1050}, {"Robalo Grelhado", 1450}}},
          {"Bacalhau", kTaxIntermediate, false, false,
           {{"Bacalhau à Brás", 1250}, {"Bacalhau com Natas", 1300}, {"Bacalhau à Lagareiro", 1750}}},
          {"Marisco ao Peso", kTaxIntermediate, true, false,
           {{"Camarão Tigre (kg)", 4500}, {"Sapateira (kg)", 3800}, {"Percebes (kg)", 6500}}}}},
        {"Sobremesas",
         {{"Doces Tradicionais", kTaxIntermediate, false, false,
           {{"Arroz Doce", 350}, {"Leite Creme", 380}, {"Pudim Flan", 350},
            {"Toucinho do Céu", 400}, {"Baba de Camelo", 380}}},
          {"Gelados", kTaxIntermediate, false, true,
           {{"Gelado de Baunilha", 300}, {"Gelado de Chocolate", 300}, {"Sorvete de Limão", 280}}},
          {"Fruta", kTaxReduced, false, false,
           {{"Salada de Fruta", 350}, {"Ananás dos Açores", 400}, {"Melão com Presunto", 650}}}}},
        {"Menus",
         {{"Menus do Dia", kTaxIntermediate, false, false,
           {{"Menu do Dia", 950}, {"Menu Executivo", 1250}, {"Prato do Dia", 850}}},
          {"Menus Infantis", kTaxIntermediate, false, false,
           {{"Menu Criança", 750}, {"Douradinhos com Arroz", 650}}}}},
        {"Take-Away",
         {{"Refeições para Levar", kTaxReduced, false, false,
           {{"Frango Assado para Levar", 850}, {"Dose de Batata Frita", 300},
            {"Arroz de Pato (dose)", 950}, {"Feijoada (dose)", 900}}}}},
    };
    return menu;
}

// Variants that make more items of one dish when a size needs more items than the menu has.
inline constexpr std::array<std::string_view, 6> kVariants = {
    " (meia dose)", " (dose)", " da Casa", " Especial", " para Partilhar", " Gourmet"};

}  // namespace kitra::restaurant::catalogue
