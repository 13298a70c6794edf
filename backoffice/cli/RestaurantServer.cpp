#include "backoffice/cli/RestaurantServer.h"

#include <utility>

#include "core/DateTime.h"

namespace kitra::backoffice::cli {

std::string RestaurantConnectionString(const RestaurantSettings& restaurant) {
    return "Driver={MySQL ODBC 5.1 Driver};Server=" + restaurant.server +
           ";Database=" + restaurant.database + "; User=" + restaurant.user +
           ";Password=" + restaurant.password + ";Option=3;Port=" + restaurant.port;
}

std::vector<std::string> RestaurantSettingsProblems(const RestaurantSettings& restaurant) {
    std::vector<std::string> problems;
    for (const auto& [what, value] : {std::pair<std::string, std::string>{"O servidor", restaurant.server},
                                      {"A base de dados", restaurant.database},
                                      {"O utilizador", restaurant.user},
                                      {"A palavra-passe", restaurant.password},
                                      {"A porta", restaurant.port}}) {
        if (auto problem = ConnectionValueProblem(what, value)) problems.push_back(*problem);
    }
    if (!IsIsoDateTime(restaurant.importDateEntities))
        problems.push_back("A data ImportDateEntities '" + restaurant.importDateEntities + "' não é válida.");
    if (!IsIsoDateTime(restaurant.importDateTransactions))
        problems.push_back("A data ImportDateTransactions '" + restaurant.importDateTransactions + "' não é válida.");
    return problems;
}

ado::Connection ConnectToRestaurant(const RestaurantSettings& restaurant) {
    ado::Connection connection(RestaurantConnectionString(restaurant));
    connection.Open();
    return connection;
}

}  // namespace kitra::backoffice::cli
