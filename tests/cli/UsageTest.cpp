#include "cli/Usage.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

TEST(Usage, isThisText) {
  EXPECT_EQ(
      usageText(12),
      "orvane-cli — compresse des images en réutilisant le moteur d'encodage de Orvane.app\n"
      "\n"
      "Usage :\n"
      "  orvane-cli <fichier...> --output <dossier> [options]\n"
      "\n"
      "Options :\n"
      "  --quality <1-100>   Qualité de compression (défaut : 75)\n"
      "  --format <format>   png, jpeg, heic, avif, webp ou jxl (défaut : jpeg)\n"
      "  --output <dossier>  Dossier de destination (obligatoire, créé si besoin)\n"
      "  --profile <nom>     Applique un profil d'export nommé (format/qualité/dossier) créé\n"
      "                      dans l'app ou l'API locale ; --quality/--format/--output explicites\n"
      "                      restent prioritaires sur le profil\n"
      "  --jobs <N>          Fichiers traités en parallèle (défaut : nombre de cœurs, 12 ici)\n"
      "  --json              Sortie JSON structurée au lieu du texte lisible\n"
      "  --help              Affiche cette aide\n"
      "\n"
      "Profils d'export (partagés avec l'app et l'API locale, voir README \"API locale\") :\n"
      "  --create-profile <nom> [--format <format>] [--quality <1-100>] [--output <dossier>]\n"
      "                        Crée ou met à jour (même nom, insensible à la casse) un profil\n"
      "                        d'export réutilisable ensuite via --profile <nom> ; --format et\n"
      "                        --quality sont obligatoires, --output (dossier de destination,\n"
      "                        doit déjà exister) est optionnel");
}

}  // namespace
}  // namespace orvane
