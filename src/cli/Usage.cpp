#include "cli/Usage.h"

#include "cli/Console.h"
#include "platform/foundation/ProcessInfo.h"

namespace orvane {

std::string usageText(std::int64_t processorCount) {
  return R"(orvane-cli — compresse des images en réutilisant le moteur d'encodage de Orvane.app

Usage :
  orvane-cli <fichier...> --output <dossier> [options]

Options :
  --quality <1-100>   Qualité de compression (défaut : 75)
  --format <format>   png, jpeg, heic, avif, webp ou jxl (défaut : jpeg)
  --output <dossier>  Dossier de destination (obligatoire, créé si besoin)
  --profile <nom>     Applique un profil d'export nommé (format/qualité/dossier) créé
                      dans l'app ou l'API locale ; --quality/--format/--output explicites
                      restent prioritaires sur le profil
  --jobs <N>          Fichiers traités en parallèle (défaut : nombre de cœurs, )" +
         std::to_string(processorCount) + R"( ici)
  --json              Sortie JSON structurée au lieu du texte lisible
  --help              Affiche cette aide

Profils d'export (partagés avec l'app et l'API locale, voir README "API locale") :
  --create-profile <nom> [--format <format>] [--quality <1-100>] [--output <dossier>]
                        Crée ou met à jour (même nom, insensible à la casse) un profil
                        d'export réutilisable ensuite via --profile <nom> ; --format et
                        --quality sont obligatoires, --output (dossier de destination,
                        doit déjà exister) est optionnel)";
}

void printUsage() { Console::print(usageText(ProcessInfo::activeProcessorCount())); }

}  // namespace orvane
